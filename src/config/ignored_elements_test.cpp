#include "config/ignored_elements.h"

#include "config/gateway_settings.h"
#include "config/settings_reader.h"
#include "support/print.h"
#include "support/settings_samples.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <string>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

// Returns the ignored elements of the sample with `from` replaced by `to`: line, path, cause, and
// the element that is meant.
QStringList ignoredAfter(const char* from, const char* to, bool primary = true) {
    QByteArray content(test::kSettingsSample);
    const qsizetype place = content.indexOf(from);
    EXPECT_GE(place, 0) << from;
    content.replace(place, qsizetype(qstrlen(from)), to);
    tinyxml2::XMLDocument document;
    EXPECT_EQ(document.Parse(content.constData()), tinyxml2::XML_SUCCESS) << to;
    QStringList texts;
    for (const IgnoredElement& element : ignoredElements(document, primary)) {
        const auto cause = QChar(u'0' + static_cast<char16_t>(element.cause));
        texts.append(QString::number(element.line) + u' ' + element.path + u' ' + cause + u' ' +
                     element.meant);
    }
    return texts;
}

TEST(IgnoredElementsTest, AreNoneInCompleteFile) {
    EXPECT_EQ(ignoredAfter("<Port>", "<Port>"), QStringList());
    EXPECT_EQ(ignoredAfter("<Port>", "<Port>", false), QStringList());
}

TEST(IgnoredElementsTest, ResembleTheirMeaning) {
    EXPECT_EQ(
        ignoredAfter("<Port>8080</Port>", "<Prt>8080</Prt>"),
        QStringList(u"12 PrimaryGatewaySetting/Http/Prt 0 PrimaryGatewaySetting/Http/Port"_s));
    EXPECT_EQ(
        ignoredAfter("<Port>8080</Port>", "<port>8080</port>"),
        QStringList(u"12 PrimaryGatewaySetting/Http/port 0 PrimaryGatewaySetting/Http/Port"_s));
    EXPECT_EQ(ignoredAfter("<Port>", "<MaxUserSesions/><Port>"),
              QStringList(u"12 PrimaryGatewaySetting/Http/MaxUserSesions 0 "
                          u"PrimaryGatewaySetting/Http/MaxUserSession"_s));
    EXPECT_EQ(ignoredAfter("<OrganizationId>0a1b</OrganizationId>", "<OrganisationID/>"),
              QStringList(u"45 General/OrganisationID 0 General/OrganizationId"_s));
}

TEST(IgnoredElementsTest, DifferByTwoLettersAtMost) {
    EXPECT_EQ(ignoredAfter("<Port>", "<MaxUsrSesion/><Port>").size(), 1);
    EXPECT_EQ(ignoredAfter("<Port>", "<MaxUsrSesin/><Port>"), QStringList());
    EXPECT_EQ(ignoredAfter("<Port>", "<Prot/><Port>"), QStringList());
}

TEST(IgnoredElementsTest, DoNotIncludeAdditions) {
    EXPECT_EQ(ignoredAfter("<Port>", "<Comment>x</Comment><MaxUser/><Port>"), QStringList());
    EXPECT_EQ(ignoredAfter("<General>", "<Vendor><Prot/></Vendor><General>"), QStringList());
}

TEST(IgnoredElementsTest, IncludeMisplacedElements) {
    EXPECT_EQ(ignoredAfter("<Port>8080</Port>", "<Proxy/>"),
              QStringList(u"12 PrimaryGatewaySetting/Http/Proxy 1 PrimaryGatewaySetting/Proxy"_s));
}

TEST(IgnoredElementsTest, IncludeRepeatedElements) {
    EXPECT_EQ(ignoredAfter("<Port>8080</Port>", "<Port>80</Port>\n<Port>81</Port>"),
              QStringList(u"13 PrimaryGatewaySetting/Http/Port[2] 2 "
                          u"PrimaryGatewaySetting/Http/Port"_s));
    EXPECT_EQ(ignoredAfter("<OrganizationId>", "<GatewayConnectSetting/><OrganizationId>"),
              QStringList(u"45 General/GatewayConnectSetting[3] 2 "
                          u"General/GatewayConnectSetting"_s));
}

TEST(IgnoredElementsTest, DoNotIncludeOtherGroup) {
    EXPECT_EQ(ignoredAfter("<Port>8080</Port>", "<Prt/>", false), QStringList());
}

TEST(IgnoredElementsTest, AcceptLongNamesAndOtherRoots) {
    const std::string longName(100'000, 'P');
    EXPECT_EQ(ignoredAfter("<Port>", ('<' + longName + "/><Port>").c_str()), QStringList());
    tinyxml2::XMLDocument document;
    ASSERT_EQ(document.Parse("<Other><Prt/></Other>"), tinyxml2::XML_SUCCESS);
    EXPECT_TRUE(ignoredElements(document, true).empty());
}

class Paths final : public SettingsObserver {
public:
    void onReading(const SettingReading& reading) override { paths.append(reading.path); }

    QStringList paths;
};

// An element that is read but not known here would be reported as ignored, or not be searched.
TEST(IgnoredElementsTest, KnowEveryElementThatIsRead) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"settings.xml"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(test::kSettingsSample);
    file.close();
    GatewaySettings settings;
    Paths read;
    readSettings(file.fileName(), true, settings, read);
    ASSERT_EQ(read.paths.size(), 26);
    for (const QString& path : read.paths.mid(2)) { // without the file and the root
        const std::string name = path.section(u'/', -1).toStdString();
        const std::string element = '<' + name + '>';
        EXPECT_EQ(ignoredAfter(element.c_str(), ('<' + name + "/>" + element).c_str()).size(), 1)
            << path.toStdString();
    }
}

} // namespace
} // namespace quorin
