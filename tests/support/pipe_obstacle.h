#pragma once

#include "support/site.h"

#include <memory>

namespace quorin::test {

// Keeps the gateways of a site from opening their control pipe. On Windows it is a pipe of that
// name to which controllers have no access.
class PipeObstacle {
public:
    explicit PipeObstacle(const Site& site);
    ~PipeObstacle();

    PipeObstacle(const PipeObstacle&) = delete;
    PipeObstacle& operator=(const PipeObstacle&) = delete;

    // Returns how the reason that a gateway logs begins.
    [[nodiscard]] QString reason() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace quorin::test
