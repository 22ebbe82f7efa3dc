#include "support/unreadable_file.h"

#include <QLocalServer>

#include <gtest/gtest.h>

namespace quorin::test {

class UnreadableFile::Holder : public QLocalServer {};

UnreadableFile::UnreadableFile(const QString& path) : holder_(std::make_unique<Holder>()) {
    EXPECT_TRUE(holder_->listen(path)) << holder_->errorString().toStdString();
}

UnreadableFile::~UnreadableFile() = default;

} // namespace quorin::test
