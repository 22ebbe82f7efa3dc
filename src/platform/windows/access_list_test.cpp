#include "platform/windows/access_list.h"

#include "platform/replace_file.h"
#include "platform/windows/system.h"

#include <sddl.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// Returns the list of a file in the security descriptor definition language.
QString listOf(const QString& path) {
    std::optional<AccessList> list = readAccessList(path);
    wchar_t* text = nullptr;
    if (!list || ConvertSecurityDescriptorToStringSecurityDescriptorW(list->data(), SDDL_REVISION_1,
                                                                      DACL_SECURITY_INFORMATION,
                                                                      &text, nullptr) == FALSE) {
        return u"(cannot be read)"_s;
    }
    const QString result = QString::fromWCharArray(text);
    LocalFree(text);
    return result;
}

AccessList listFromText(const QString& text) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ULONG size = 0;
    EXPECT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorW(wide(text), SDDL_REVISION_1,
                                                                   &descriptor, &size),
              FALSE);
    const auto* const bytes = static_cast<const std::byte*>(descriptor);
    AccessList list(bytes, bytes + size);
    LocalFree(descriptor);
    return list;
}

class AccessListTest : public testing::Test {
protected:
    void SetUp() override {
        for (const QString& path : {from_, to_}) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        // Everything for everyone.
        ASSERT_TRUE(writeAccessList(to_, listFromText(u"D:P(A;;FA;;;WD)"_s)));
        ASSERT_NE(listOf(from_), listOf(to_)) << listOf(to_).toStdString();
    }

    QTemporaryDir folder_;
    const QString from_ = folder_.filePath(u"new"_s);
    const QString to_ = folder_.filePath(u"old"_s);
};

TEST_F(AccessListTest, WritesListThatWasRead) {
    const std::optional<AccessList> list = readAccessList(to_);
    ASSERT_TRUE(list);
    EXPECT_TRUE(writeAccessList(from_, *list));
    EXPECT_EQ(listOf(from_), listOf(to_));
}

TEST_F(AccessListTest, FailsIfFileIsMissing) {
    EXPECT_FALSE(readAccessList(folder_.filePath(u"none"_s)));
    EXPECT_FALSE(writeAccessList(folder_.filePath(u"none"_s), readAccessList(to_).value()));
}

TEST_F(AccessListTest, ReplacedFileKeepsList) {
    const QString before = listOf(to_);
    EXPECT_TRUE(replaceFile(from_, to_));
    EXPECT_EQ(listOf(to_), before);
}

TEST_F(AccessListTest, SourceKeepsListIfTargetIsFolder) {
    const QString before = listOf(from_);
    ASSERT_TRUE(QFile::remove(to_));
    ASSERT_TRUE(QDir().mkpath(to_));
    ASSERT_TRUE(writeAccessList(to_, listFromText(u"D:P(A;;FA;;;WD)"_s)));
    EXPECT_FALSE(replaceFile(from_, to_));
    EXPECT_EQ(listOf(from_), before);
}

} // namespace
} // namespace quorin::platform
