#include "platform/windows/command_line_text.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

TEST(CommandLineTextTest, SystemSplitsTextIntoSameArguments) {
    const QStringList programs{u"C:\\quorin-gateway.exe"_s,
                               u"C:\\Program Files\\Quorin Gateway\\bin\\quorin-gateway.exe"_s,
                               u"\\\\server\\share\\Grüße vom Gateway.exe"_s};
    const QStringList arguments{u"service"_s,
                                u""_s,
                                u"two words"_s,
                                u"tab\tbed"_s,
                                u"C:\\Program Files\\Quorin\\"_s,
                                u"C:\\Program Files\\\\"_s,
                                u"back\\slash"_s,
                                u"\""_s,
                                u"say \"hello\" twice"_s,
                                u"ends with quote\""_s,
                                u"\\\""_s,
                                u"\\\\\" \\\\"_s,
                                u"größer \u8a2d\u5b9a.xml"_s,
                                u"%PATH% ^ & | < >"_s};
    for (const QString& program : programs) {
        for (const QString& argument : arguments) {
            const QStringList command{program, argument, u"primary"_s};
            EXPECT_EQ(commandLineArguments(commandLineText(command)), command)
                << commandLineText(command).toStdString();
        }
    }
}

// A path with spaces without quotation marks would let the system try C:\Program.exe first.
TEST(CommandLineTextTest, QuotesProgram) {
    EXPECT_EQ(commandLineText({u"C:\\Program Files\\a.exe"_s}).toStdString(),
              "\"C:\\Program Files\\a.exe\"");
}

} // namespace
} // namespace quorin::platform
