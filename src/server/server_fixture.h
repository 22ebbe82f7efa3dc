#pragma once

#include <QThreadPool>

#include <latch>
#include <memory>
#include <utility>

// Test support for the watchers.
namespace quorin::test {

// Keeps one thread of a pool busy until release() or the destructor.
class Occupant {
public:
    explicit Occupant(QThreadPool& pool) {
        pool.start([state = state_] {
            state->entered.count_down();
            state->leave.wait();
        });
        state_->entered.wait();
    }
    ~Occupant() { release(); }

    void release() {
        if (!std::exchange(released_, true)) {
            state_->leave.count_down();
        }
    }

    Occupant(const Occupant&) = delete;
    Occupant& operator=(const Occupant&) = delete;

private:
    struct State {
        std::latch entered{1};
        std::latch leave{1};
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
    bool released_ = false;
};

} // namespace quorin::test
