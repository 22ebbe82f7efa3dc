#include "platform/windows/stored_names.h"

#include <QMap>
#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// Looks names up in a table and records the lookups.
class StoredNamesTest : public testing::Test {
protected:
    bool hasStoredNames(const QString& path) {
        lookups_.clear();
        return platform::hasStoredNames(u"C:/site"_s, path, [this](const QString& name) {
            lookups_.append(name);
            const auto entry = names_.find(name.toLower());
            return entry == names_.end() ? std::nullopt : std::optional(entry.value());
        });
    }

    // Paths in lower case, and the names that are stored for them.
    QMap<QString, QString> names_{
        {u"c:/site/notifications"_s, u"notifications"_s},
        {u"c:/site/notifications/n.json"_s, u"n.json"_s},
        {u"c:/site/notifications/longna~1.jso"_s, u"long name.json"_s},
        {u"c:/site/notifi~1"_s, u"notifications"_s},
        {u"c:/site/notifi~1/n.json"_s, u"n.json"_s},
        {u"c:/site/short"_s, u"a folder with a chosen short name"_s},
        {u"c:/site/short/n.json"_s, u"n.json"_s},
        {u"c:/site/a~1.zip"_s, u"a~1.zip"_s},
        {u"c:/site/a.zip."_s, u"a.zip"_s},
    };
    QStringList lookups_;
};

TEST_F(StoredNamesTest, AcceptsStoredNames) {
    EXPECT_TRUE(hasStoredNames(u"/notifications/n.json"_s));
    EXPECT_EQ(lookups_,
              (QStringList{u"C:/site/notifications"_s, u"C:/site/notifications/n.json"_s}));
    EXPECT_TRUE(hasStoredNames(u"//notifications///n.json"_s));
    EXPECT_TRUE(hasStoredNames(u"/a~1.zip"_s)) << "not every name with a tilde is short";
}

TEST_F(StoredNamesTest, AcceptsOtherLetterCase) {
    EXPECT_TRUE(hasStoredNames(u"/Notifications/N.JSON"_s));
}

TEST_F(StoredNamesTest, RefusesShortNames) {
    EXPECT_FALSE(hasStoredNames(u"/notifications/LONGNA~1.JSO"_s));
    EXPECT_FALSE(hasStoredNames(u"/NOTIFI~1/n.json"_s));
    EXPECT_EQ(lookups_, QStringList(u"C:/site/NOTIFI~1"_s));
    EXPECT_FALSE(hasStoredNames(u"/short/n.json"_s));
}

TEST_F(StoredNamesTest, RefusesNamesThatEndInDotOrSpace) {
    for (const QString& path : {u"/a.zip."_s, u"/a.zip.."_s, u"/a.zip "_s,
                                u"/notifications./n.json"_s, u"/notifications /n.json"_s,
                                u"/notifications/n.json/."_s, u"/notifications/n.json/x/.."_s}) {
        EXPECT_FALSE(hasStoredNames(path)) << path.toStdString();
    }
}

TEST_F(StoredNamesTest, RefusesPathThatEndsInSlash) {
    EXPECT_FALSE(hasStoredNames(u"/notifications/n.json/"_s));
    EXPECT_EQ(lookups_, QStringList());
}

TEST_F(StoredNamesTest, RefusesNamesWithoutEntry) {
    EXPECT_FALSE(hasStoredNames(u"/NUL"_s));
    EXPECT_FALSE(hasStoredNames(u"/notifications/n.json::$DATA"_s));
}

} // namespace
} // namespace quorin::platform
