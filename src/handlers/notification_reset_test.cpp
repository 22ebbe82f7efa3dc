#include "handlers/notification_reset.h"

#include "handlers/handler_fixture.h"

#include <QLockFile>

#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

const QString kDate = u"2024-06-01T12:00:00"_s;

class NotificationResetTest : public testing::Test {
protected:
    // Resets a file with this content. Returns its new content, or nothing if the reset failed and
    // left the file unchanged. Expects that no lock file remains, and no staging file of a reset
    // that succeeded.
    std::optional<QByteArray> reset(const QByteArray& content, const QString& date = kDate) {
        const QString path = data_.write(u"n.json"_s, content);
        const bool succeeded = resetNotification(path, date);
        EXPECT_FALSE(QFile::exists(data_.stagingPath(u"n.json.lock"_s)));
        EXPECT_EQ(log_.lines().last(), u"3 Reset " + path + u" [date - " + date + u"].");
        const QByteArray now = data_.read(u"n.json"_s);
        if (!succeeded) {
            EXPECT_EQ(now, content);
            return std::nullopt;
        }
        EXPECT_FALSE(QFile::exists(data_.stagingPath(u"n.json"_s)));
        return now;
    }

    // A document with one item, pending since `lastUpdated`.
    static QByteArray pendingSince(const QByteArray& lastUpdated) {
        return "{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"" + lastUpdated + "\"}}";
    }
    bool isResetAt(const QString& date, const QByteArray& lastUpdated) {
        const QByteArray document = pendingSince(lastUpdated);
        const std::optional<QByteArray> now = reset(document, date);
        EXPECT_TRUE(now == "{}" || now == document) << now.value_or("(failed)").toStdString();
        return now == "{}";
    }

    LogRecord log_;
    DataFolder data_;
};

TEST_F(NotificationResetTest, ResetsItemUnlessNewer) {
    EXPECT_TRUE(isResetAt(kDate, "2024-06-01T11:59:59"));
    EXPECT_TRUE(isResetAt(kDate, "2024-06-01T12:00:00"));
    EXPECT_FALSE(isResetAt(kDate, "2024-06-01T12:00:01"));
}

TEST_F(NotificationResetTest, ChecksAllThreeItems) {
    for (const char* const name : {"RemoteExecution", "RemoteExecutionCancel", "RemoteSetting"}) {
        const auto document = [name](const char* date) -> QByteArray {
            return QByteArray("{\"") + name + "\":{\"IsExist\":true,\"LastUpdated\":\"" + date +
                   "\"}}";
        };
        EXPECT_EQ(reset(document("2024-06-01T12:00:00")), "{}") << name;
        EXPECT_EQ(reset(document("2024-06-01T12:00:01")), document("2024-06-01T12:00:01")) << name;
    }
}

TEST_F(NotificationResetTest, KeepsDocumentThatHasNewerItem) {
    EXPECT_EQ(
        reset(
            "{ \"Z\": [1, 2.5, null, \"\\u00e9\"],\n"
            "  \"RemoteSetting\": {\"LastUpdated\": \"2025-01-01T00:00:00\", \"IsExist\": true},\n"
            "  \"RemoteExecution\": {\"IsExist\": true, \"LastUpdated\": \"2024-01-01T00:00:00\","
            " \"Id\": 7},\n"
            "  \"RemoteExecutionCancel\": {\"IsExist\": true,"
            " \"LastUpdated\": \"2024-06-01T12:00:00\"},\n"
            "  \"A\": {\"IsExist\": true}\n}\n"),
        "{\"A\":{\"IsExist\":true},"
        "\"RemoteExecution\":{\"Id\":7,\"IsExist\":false,\"LastUpdated\":\"2024-06-01T12:00:00\"},"
        "\"RemoteExecutionCancel\":{\"IsExist\":false,\"LastUpdated\":\"2024-06-01T12:00:00\"},"
        "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2025-01-01T00:00:00\"},"
        "\"Z\":[1,2.5,null,\"\u00e9\"]}");
}

TEST_F(NotificationResetTest, IgnoresItemThatIsNotPending) {
    EXPECT_EQ(reset("{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":"
                    "\"2030-01-01T00:00:00\"}}"),
              "{}");
    // It does not need a date.
    EXPECT_EQ(reset("{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":7},"
                    "\"RemoteExecutionCancel\":{\"IsExist\":false},"
                    "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"}}"),
              "{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":7},"
              "\"RemoteExecutionCancel\":{\"IsExist\":false},"
              "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"}}");
}

TEST_F(NotificationResetTest, EmptiesDocumentWithoutPendingItems) {
    for (const char* const document :
         {"{}", "{ }", "{\"a\":1}", "{\"remoteexecution\":{\"IsExist\":1}}",
          "{\"RemoteExecution\":null,\"RemoteExecutionCancel\":[true],\"RemoteSetting\":\"x\"}",
          "{\"RemoteExecution\":true,\"RemoteExecutionCancel\":1,\"RemoteSetting\":1.5}",
          "{\"a\":{\"RemoteExecution\":{\"IsExist\":1}}}"}) {
        EXPECT_EQ(reset(document), "{}") << document;
    }
}

TEST_F(NotificationResetTest, EmptiesRootOfAnyKind) {
    constexpr std::array<std::array<const char*, 2>, 12> cases{{
        {"[]", "[]"},
        {"[1,{\"RemoteExecution\":{}}]", "[]"},
        {"\"RemoteExecution\"", "\"\""},
        {"17", "0"},
        {"-17", "0"},
        {"1.5", "0.0"},
        {"-0.0", "0.0"},
        {"1e400", "0.0"},
        {"true", "false"},
        {"false", "false"},
        {"null", "null"},
        {" [ 1 ] ", "[]"},
    }};
    for (const auto& [before, after] : cases) {
        EXPECT_EQ(reset(before), after) << before;
    }
}

TEST_F(NotificationResetTest, FailsOnMalformedItem) {
    for (const char* const item :
         {"{}", "{\"LastUpdated\":\"2024-01-01T00:00:00\"}", "{\"IsExist\":1}",
          "{\"IsExist\":\"true\"}", "{\"IsExist\":null}", "{\"isexist\":true}",
          "{\"IsExist\":[true]}", "{\"IsExist\":true}", "{\"IsExist\":true,\"LastUpdated\":null}",
          "{\"IsExist\":true,\"LastUpdated\":20240101}", "{\"IsExist\":true,\"LastUpdated\":{}}",
          "{\"IsExist\":true,\"lastUpdated\":\"2024-01-01T00:00:00\"}"}) {
        for (const char* const name :
             {"RemoteExecution", "RemoteExecutionCancel", "RemoteSetting"}) {
            EXPECT_EQ(reset(QByteArray("{\"") + name + "\":" + item + "}"), std::nullopt)
                << name << item;
        }
    }
}

TEST_F(NotificationResetTest, DoesNotWriteItemsBeforeMalformedOne) {
    EXPECT_EQ(reset("{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":"
                    "\"2024-01-01T00:00:00\"},\"RemoteSetting\":{}}"),
              std::nullopt);
    EXPECT_EQ(reset("{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":"
                    "\"2030-01-01T00:00:00\"},\"RemoteExecutionCancel\":{\"IsExist\":0}}"),
              std::nullopt);
}

TEST_F(NotificationResetTest, FailsOnInvalidJson) {
    for (const char* const document :
         {"", " ", "{", "{\"a\":1}}", "{\"a\":1,}", "{a:1}", "nul", "[1,2,]", "\xef\xbb\xbf{}",
          "01", "\"\\x\"", "{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2024"}) {
        EXPECT_EQ(reset(document), std::nullopt) << document;
    }
    EXPECT_EQ(reset(QByteArray("{}\0", 3)), std::nullopt);
}

TEST_F(NotificationResetTest, UsesLaterOfRepeatedNames) {
    EXPECT_EQ(reset("{\"RemoteSetting\":{},\"RemoteSetting\":{\"IsExist\":false}}"), "{}");
    EXPECT_EQ(reset("{\"RemoteSetting\":{\"IsExist\":false},\"RemoteSetting\":{}}"), std::nullopt);
    EXPECT_EQ(reset("{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\","
                    "\"LastUpdated\":\"2031-01-01\"},\"a\":1,\"a\":2}"),
              "{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2031-01-01\"},\"a\":2}");
}

TEST_F(NotificationResetTest, KeepsFileIfNumberCannotBeWritten) {
    EXPECT_EQ(reset("{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"},"
                    "\"n\":1e400}"),
              std::nullopt);
    // A document that is emptied loses the number.
    EXPECT_EQ(reset("{\"n\":-1e400}"), "{}");
}

TEST_F(NotificationResetTest, WritesNumbersAndStringsByValue) {
    EXPECT_EQ(reset("{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"},"
                    "\"a\":0.1,\"b\":1.0,\"c\":-0.0,\"d\":9223372036854775807,"
                    "\"e\":\"\\u0000\\u007f\\/\\ud83d\\ude00\\t\",\"f\":1E+5}"),
              "{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"},"
              "\"a\":0.10000000000000001,\"b\":1,\"c\":0.0,\"d\":9223372036854775807,"
              "\"e\":\"\\u0000\\u007f/\U0001f600\\t\",\"f\":100000}");
}

TEST_F(NotificationResetTest, ComparesDatesWithOffsetsAsInstants) {
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00Z"_s, "2024-06-01T12:00:00Z"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00Z"_s, "2024-06-01T12:00:01Z"));
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00Z"_s, "2024-06-01T21:00:00+09:00"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00Z"_s, "2024-06-01T21:00:01+09:00"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00Z"_s, "2024-06-01T09:00:00-05:00"));
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00+09:00"_s, "2024-06-01T03:00:00Z"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00+09:00"_s, "2024-06-01T03:00:01Z"));
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00+05:30"_s, "2024-06-01T06:30:00+00:00"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00+05:30"_s, "2024-06-01T06:30:01+00:00"));
}

TEST_F(NotificationResetTest, ComparesFractionsOfSeconds) {
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00.123"_s, "2024-06-01T12:00:00.123"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00.123"_s, "2024-06-01T12:00:00.124"));
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00.123"_s, "2024-06-01T12:00:00"));
    EXPECT_FALSE(isResetAt(u"2024-06-01T12:00:00"_s, "2024-06-01T12:00:00.001"));
    EXPECT_TRUE(isResetAt(u"2024-06-01T12:00:00.5Z"_s, "2024-06-01T12:00:00.500Z"));
}

TEST_F(NotificationResetTest, TreatsDateWithoutTimeAsMidnight) {
    EXPECT_TRUE(isResetAt(u"2024-06-01"_s, "2024-06-01T00:00:00"));
    EXPECT_FALSE(isResetAt(u"2024-06-01"_s, "2024-06-01T00:00:01"));
    EXPECT_TRUE(isResetAt(kDate, "2024-06-01"));
    EXPECT_FALSE(isResetAt(kDate, "2024-06-02"));
}

TEST_F(NotificationResetTest, TreatsInvalidDateAsEarliest) {
    for (const QString& date : {u""_s, u"yesterday"_s, u"2024-13-01T00:00:00"_s,
                                u"01.06.2024 12:00"_s, u"%1"_s, u"2024-06-01T25:00:00"_s}) {
        EXPECT_FALSE(isResetAt(date, "2024-01-01T00:00:00")) << date.toStdString();
        EXPECT_FALSE(isResetAt(date, "1970-01-01T00:00:00Z")) << date.toStdString();
        EXPECT_FALSE(isResetAt(date, "1970-01-01")) << date.toStdString();
        EXPECT_FALSE(isResetAt(date, "1969-12-31T23:59:59")) << date.toStdString();
        EXPECT_FALSE(isResetAt(date, "1601-01-01T00:00:00Z")) << date.toStdString();
        EXPECT_TRUE(isResetAt(date, "never")) << date.toStdString();
    }
    EXPECT_TRUE(isResetAt(kDate, ""));
    EXPECT_TRUE(isResetAt(u"1960-01-01T00:00:00"_s, "never"));
}

TEST_F(NotificationResetTest, WritesDateUnchanged) {
    const QByteArray newer = "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"}";
    for (const QString& date :
         {u"2024-06-01"_s, u"2024-06-01T12:00:00.5+09:00"_s, u"2024-06-01T12:00:00Z"_s}) {
        EXPECT_EQ(reset("{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"2000-01-01\"}," +
                            newer + "}",
                        date),
                  "{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":\"" + date.toUtf8() +
                      "\"}," + newer + "}");
    }
    // An invalid date replaces another invalid date.
    EXPECT_EQ(
        reset("{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"never\"}," + newer + "}",
              u"%1 \"\u00fc\""_s),
        "{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":\"%1 \\\"\u00fc\\\"\"}," + newer +
            "}");
}

TEST_F(NotificationResetTest, LogsPathAndDateUnchanged) {
    const QString path = data_.write(u"%1%2 %20.json"_s, "{}");
    EXPECT_TRUE(resetNotification(path, u"%1 %2 %20\t"_s));
    EXPECT_EQ(log_.lines(), QStringList(u"3 Reset " + path + u" [date - %1 %2 %20\t]."));
}

TEST_F(NotificationResetTest, DoesNotCreateMissingFile) {
    EXPECT_FALSE(resetNotification(data_.path(u"none.json"_s), kDate));
    EXPECT_FALSE(QFile::exists(data_.path(u"none.json"_s)));
    EXPECT_FALSE(QFile::exists(data_.stagingPath(u"none.json.lock"_s)));
}

TEST_F(NotificationResetTest, LogsLockFailure) {
    QLockFile holder(data_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(holder.tryLock());
    const QString path = data_.write(u"n.json"_s, "{\"a\":1}");
    EXPECT_FALSE(resetNotification(path, kDate));
    EXPECT_EQ(data_.read(u"n.json"_s), "{\"a\":1}");
    EXPECT_EQ(log_.lines(),
              (QStringList{u"3 Reset " + path + u" [date - " + kDate + u"].",
                           u"5 Failed to Lock for \"" + data_.stagingPath(u"n.json"_s) + u'"'}));
}

TEST_F(NotificationResetTest, OverwritesStaleStagingFile) {
    QFile stale(data_.stagingPath(u"n.json"_s));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.write(QByteArray(100'000, 'x'));
    stale.close();
    EXPECT_EQ(reset("{\"a\":1}"), "{}");
}

TEST_F(NotificationResetTest, KeepsFileIfStagingFileCannotBeOpened) {
    ASSERT_TRUE(QDir().mkpath(data_.stagingPath(u"n.json/folder"_s)));
    EXPECT_EQ(reset("{\"a\":1}"), std::nullopt);
}

TEST_F(NotificationResetTest, SurvivesMillionNestedArrays) {
    constexpr qsizetype depth = 1'000'000;
    const QByteArray open(depth, '[');
    EXPECT_EQ(reset(open), std::nullopt);
    const QByteArray nested = "{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":"
                              "\"2030-01-01\"},\"a\":" +
                              open + QByteArray(depth, ']') + "}";
    EXPECT_TRUE(reset(nested) == nested);
}

} // namespace
} // namespace quorin::test
