#include "platform/input_file.h"

#include "platform/windows/extended_path.h"
#include "platform/windows/system.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

class WindowsOpenForReadingTest : public testing::Test {
protected:
    WindowsOpenForReadingTest() {
        QFile file(path_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(u"file"_s);
};

TEST_F(WindowsOpenForReadingTest, ReturnsNullIfFileIsNotShared) {
    const HANDLE holder =
        CreateFileW(wide(extendedPath(path_)), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    EXPECT_EQ(openForReading(path_), nullptr);
    CloseHandle(holder);
    EXPECT_NE(openForReading(path_), nullptr);
}

TEST_F(WindowsOpenForReadingTest, NeedsNoDescriptorOfCRuntime) {
    std::vector<std::unique_ptr<QIODevice>> files(3000); // msvcrt.dll has 2,048 descriptors
    std::generate(files.begin(), files.end(), [this] { return openForReading(path_); });
    EXPECT_EQ(std::count(files.begin(), files.end(), nullptr), 0);
}

} // namespace
} // namespace quorin::platform
