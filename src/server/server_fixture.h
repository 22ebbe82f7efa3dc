#pragma once

#include <QThreadPool>

#include <future>
#include <memory>
#include <utility>

// Test support for the watchers.
namespace quorin::test {

// Keeps one thread of a pool busy until release() or the destructor.
class Occupant {
public:
    explicit Occupant(QThreadPool& pool) {
        pool.start([state = state_] {
            state->entered.set_value();
            state->mayLeave.wait();
        });
        state_->hasEntered.wait();
    }
    ~Occupant() { release(); }

    void release() {
        if (!std::exchange(released_, true)) {
            state_->leave.set_value();
        }
    }

    Occupant(const Occupant&) = delete;
    Occupant& operator=(const Occupant&) = delete;

private:
    struct State {
        std::promise<void> entered;
        std::promise<void> leave;
        std::future<void> hasEntered = entered.get_future();
        std::future<void> mayLeave = leave.get_future();
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
    bool released_ = false;
};

} // namespace quorin::test
