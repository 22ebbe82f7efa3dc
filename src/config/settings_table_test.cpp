// Compares loadSettings() with the table of all elements, tests/checks/settings.tsv, with which the
// documents are compared as well.

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "config/settings_file.h"

#include <QFile>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

constexpr int kMaxUserSession = 10;

struct Element {
    QString path;
    QString values;
    QString fallback; // "required" if there is none

    QString name() const { return path.section(u'/', -1); }
    bool isRequired() const { return fallback == u"required"; }
    bool isNumber() const { return values.contains(u".."_s); }
    // Texts that end the start, or that the default replaces if there is one.
    QStringList invalidValues() const;
    QStringList validValues() const;
};

qint64 limitFrom(const QString& text) {
    return text == u"MaxUserSession-1" ? kMaxUserSession - 1 : text.toLongLong();
}

QStringList Element::validValues() const {
    if (isNumber()) {
        return {QString::number(limitFrom(values.section(u".."_s, 0, 0))),
                QString::number(limitFrom(values.section(u".."_s, 1)))};
    }
    return values == u"text" ? QStringList{u"any text"_s} : values.split(u'|');
}

QStringList Element::invalidValues() const {
    if (isNumber()) {
        return {QString::number(limitFrom(values.section(u".."_s, 0, 0)) - 1),
                QString::number(limitFrom(values.section(u".."_s, 1)) + 1), u"x"_s, QString()};
    }
    return values == u"text" ? QStringList{QString()} : QStringList{u"x"_s, QString()};
}

QList<Element> readTable() {
    QFile file(QStringLiteral(QUORIN_SETTINGS_TABLE));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QList<Element> elements;
    const QString text = QString::fromUtf8(file.readAll());
    for (const QString& line : text.split(u'\n', Qt::SkipEmptyParts)) {
        if (!line.startsWith(u'#')) {
            const QStringList fields = line.split(u'\t');
            EXPECT_EQ(fields.size(), 4) << qPrintable(line);
            elements.append({fields.value(0), fields.value(1), fields.value(3)});
        }
    }
    return elements;
}

// A document with these values of elements, as text.
QString documentWith(const QMap<QString, QString>& values) {
    QString document = u"<QuorinGatewaySetting>"_s;
    QStringList open;
    // The map is sorted by path, so that the elements of a parent follow each other.
    for (auto value = values.begin(); value != values.end(); ++value) {
        QStringList parents = value.key().split(u'/');
        const QString name = parents.takeLast();
        while (open.size() > parents.size() || open != parents.mid(0, open.size())) {
            document += u"</" + open.takeLast() + u'>';
        }
        while (open.size() < parents.size()) {
            open.append(parents.at(open.size()));
            document += u'<' + open.last() + u'>';
        }
        document += u'<' + name + u'>' + value.value() + u"</" + name + u'>';
    }
    while (!open.isEmpty()) {
        document += u"</" + open.takeLast() + u'>';
    }
    return document + u"</QuorinGatewaySetting>";
}

class SettingsTableTest : public testing::Test {
protected:
    SettingsTableTest() {
        // loadSettings() creates the log directory below this folder.
        qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8());
        for (const Element& element : elements_) {
            values_.insert(element.path, element.validValues().constFirst());
        }
        values_[u"GROUP/Http/MaxUserSession"_s] = QString::number(kMaxUserSession);
    }
    ~SettingsTableTest() override { qunsetenv("QUORIN_COMMON_APPDATA"); }

    // Returns the failure's message, or an empty text on success.
    QString failureWith(const QMap<QString, QString>& values) {
        const QString path = folder_.filePath(u"settings.xml"_s);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(documentWith(values).replace(u"GROUP"_s, u"PrimaryGatewaySetting"_s).toUtf8());
        file.close();
        try {
            loadSettings(path, true);
        } catch (const GatewayException& exception) {
            return exception.message();
        }
        return {};
    }

    QMap<QString, QString> valuesWith(const Element& element, const QString& value) const {
        QMap<QString, QString> values = values_;
        values[element.path] = value;
        return values;
    }

    QMap<QString, QString> valuesWithout(const Element& element) const {
        QMap<QString, QString> values = values_;
        values.remove(element.path);
        return values;
    }

    // The values of all optional elements.
    static auto optionalSettings() {
        const GatewaySettings& settings = GatewaySettings::instance();
        return std::make_tuple(settings.IsMadeClientRequestWaited, settings.MaxLargeFileRequest);
    }

    QTemporaryDir folder_;
    QList<Element> elements_ = readTable();
    QMap<QString, QString> values_; // a valid value of each element
};

TEST_F(SettingsTableTest, ContainsAllElements) {
    ASSERT_FALSE(elements_.isEmpty());
    EXPECT_EQ(failureWith(values_), QString());
}

TEST_F(SettingsTableTest, NamesRequiredElements) {
    for (const Element& element : elements_) {
        // A parent that is empty is missing as well.
        const QString failure = failureWith(valuesWithout(element));
        if (!element.isRequired()) {
            EXPECT_EQ(failure, QString()) << qPrintable(element.path);
        } else {
            EXPECT_TRUE(failure.startsWith(u"[End] "_s)) << qPrintable(element.path);
            EXPECT_TRUE(element.path.contains(failure.section(u' ', 1, 1)))
                << qPrintable(element.path + u": " + failure);
        }
    }
}

TEST_F(SettingsTableTest, ListsAcceptedValues) {
    for (const Element& element : elements_) {
        for (const QString& value : element.validValues()) {
            EXPECT_EQ(failureWith(valuesWith(element, value)), QString())
                << qPrintable(element.path + u": " + value);
        }
    }
}

TEST_F(SettingsTableTest, ExcludesRejectedValues) {
    for (const Element& element : elements_) {
        if (element.isRequired()) {
            for (const QString& value : element.invalidValues()) {
                EXPECT_TRUE(failureWith(valuesWith(element, value)).startsWith(u"[End] "_s))
                    << qPrintable(element.path + u": " + value);
            }
        }
    }
}

TEST_F(SettingsTableTest, StatesDefaults) {
    for (const Element& element : elements_) {
        if (element.isRequired()) {
            continue;
        }
        ASSERT_EQ(failureWith(valuesWith(element, element.fallback)), QString());
        const auto expected = optionalSettings();
        ASSERT_EQ(failureWith(valuesWithout(element)), QString());
        EXPECT_EQ(optionalSettings(), expected) << qPrintable(element.path);
        for (const QString& value : element.invalidValues()) {
            ASSERT_EQ(failureWith(valuesWith(element, value)), QString());
            EXPECT_EQ(optionalSettings(), expected) << qPrintable(element.path + u": " + value);
        }
        for (const QString& value : element.validValues()) {
            if (value != element.fallback) {
                ASSERT_EQ(failureWith(valuesWith(element, value)), QString());
                EXPECT_NE(optionalSettings(), expected) << qPrintable(element.path + u": " + value);
            }
        }
    }
}

} // namespace
} // namespace quorin
