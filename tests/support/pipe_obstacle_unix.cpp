#include "support/pipe_obstacle.h"

#include <QDir>

#include <gtest/gtest.h>

namespace quorin::test {

struct PipeObstacle::State {};

// A gateway removes a stale file at the pipe's path, but not a folder.
PipeObstacle::PipeObstacle(const Site& site) {
    EXPECT_TRUE(QDir().mkpath(site.pipePath() + u"/full"));
}

PipeObstacle::~PipeObstacle() = default;

QString PipeObstacle::reason() const {
    return QStringLiteral("QLocalServer::listen: ");
}

} // namespace quorin::test
