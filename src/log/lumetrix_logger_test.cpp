#include "log/lumetrix_logger.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace lumetrix {
namespace {

class LumetrixLoggerTest : public testing::Test {
protected:
    LumetrixLoggerTest() { qputenv("QUORIN_STUB_LOG", recordPath().toUtf8()); }
    ~LumetrixLoggerTest() override { qunsetenv("QUORIN_STUB_LOG"); }

    QByteArray record() const {
        QFile file(recordPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QString recordPath() const { return folder_.filePath(u"calls"_s); }

    QTemporaryDir folder_;
};

void callAllFunctions(const Logger& logger) {
    logger.log(Level::Info, "message");
    logger.setRotationWithDate(3);
    logger.setPoolSize(100);
    logger.setOutputLevel(Level::Warn);
    logger.setOutputDir("folder", "base");
    logger.release();
}

TEST_F(LumetrixLoggerTest, PassesHandleAndArguments) {
    {
        const Logger logger("GW", QUORIN_STUB_LUMETRIX);
        EXPECT_TRUE(logger.isLogging());
        logger.log(Level::Debug, "one");
        logger.log(Level::Error, "\u00fcber");
        callAllFunctions(logger);
    }
    EXPECT_EQ(record(), "get_logger\n"
                        "log\thandle\tGW\t2\tone\n"
                        "log\thandle\tGW\t5\t\u00fcber\n"
                        "log\thandle\tGW\t3\tmessage\n"
                        "set_rotation_with_date\thandle\t3\n"
                        "set_pool_size\thandle\t100\n"
                        "set_output_level\thandle\t4\n"
                        "set_output_dir\thandle\tfolder\tbase\n"
                        "release\thandle\n");
}

TEST_F(LumetrixLoggerTest, DoesNothingWithoutLibrary) {
    const Logger logger("GW", "liblumetrix2_missing");
    EXPECT_FALSE(logger.isLogging());
    callAllFunctions(logger);
    EXPECT_EQ(record(), "");
}

TEST_F(LumetrixLoggerTest, CallsOtherFunctionsWithoutLogFunction) {
    {
        const Logger logger("GW", QUORIN_STUB_LUMETRIX_WITHOUT_LOG);
        EXPECT_FALSE(logger.isLogging());
        callAllFunctions(logger);
    }
    EXPECT_EQ(record(), "get_logger\n"
                        "set_rotation_with_date\thandle\t3\n"
                        "set_pool_size\thandle\t100\n"
                        "set_output_level\thandle\t4\n"
                        "set_output_dir\thandle\tfolder\tbase\n"
                        "release\thandle\n");
}

TEST_F(LumetrixLoggerTest, LogsWithoutSetUpFunctions) {
    {
        const Logger logger("GW", QUORIN_STUB_LUMETRIX_WITHOUT_SET_UP);
        EXPECT_TRUE(logger.isLogging());
        callAllFunctions(logger);
    }
    EXPECT_EQ(record(), "get_logger\n"
                        "log\thandle\tGW\t3\tmessage\n"
                        "release\thandle\n");
}

TEST_F(LumetrixLoggerTest, LinePatternHas53Characters) {
    EXPECT_EQ(std::char_traits<char>::length(kLinePattern), 53u);
}

} // namespace
} // namespace lumetrix
