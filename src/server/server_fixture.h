#pragma once

#include <QSemaphore>
#include <QThreadPool>

#include <memory>

// For tests of the watchers.
namespace quorin::test {

// Keeps one thread of a pool busy until it is released, at the latest with the object.
class Occupant {
public:
    explicit Occupant(QThreadPool& pool) {
        pool.start([state = state_] {
            state->entered.release();
            state->leave.acquire();
        });
        state_->entered.acquire();
    }
    ~Occupant() { release(); }

    void release() { state_->leave.release(); }

    Occupant(const Occupant&) = delete;
    Occupant& operator=(const Occupant&) = delete;

private:
    struct State {
        QSemaphore entered;
        QSemaphore leave;
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace quorin::test
