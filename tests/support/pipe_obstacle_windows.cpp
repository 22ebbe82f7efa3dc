#include "support/pipe_obstacle.h"

#include "platform/control_pipe.h"
#include "platform/windows/handle.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

const QString kPipe = platform::kControlPipeName.toString();

} // namespace

struct PipeObstacle::State {
    platform::Handle pipe;
};

// The only instance of a pipe that clients may only write, so that controllers, which open it for
// reading as well, are denied access.
PipeObstacle::PipeObstacle(const Site& /*site*/)
    : state_(std::make_unique<State>(State{platform::ownHandle(
          CreateNamedPipeW(platform::wide(kPipe), PIPE_ACCESS_INBOUND, 0, 1, 0, 0, 0, nullptr))})) {
    EXPECT_NE(state_->pipe, nullptr) << GetLastError();
}

PipeObstacle::~PipeObstacle() = default;

QString PipeObstacle::reason() const {
    return u"the pipe " + kPipe + u" is in use by another process";
}

} // namespace quorin::test
