#include "platform/instance_guard.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// The key of the segment is that of a file in the temporary folder.
TEST(InstanceGuardFileTest, FailsWithoutTemporaryFolder) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", file.fileName().toUtf8());
    {
        InstanceGuard guard(u"QUORIN_INSTANCE_GUARD_FILE_TEST"_s);
        EXPECT_FALSE(guard.take());
    }
    if (before.isEmpty()) {
        qunsetenv("TMPDIR");
    } else {
        qputenv("TMPDIR", before);
    }
}

} // namespace
} // namespace quorin::platform
