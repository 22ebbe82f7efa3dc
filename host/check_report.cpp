#include "check_report.h"

#include "json/value.h"
#include "json/writer.h"

#include <algorithm>
#include <string>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

using check::Finding;
using check::Severity;

constexpr qsizetype kMaxTextLength = 400;

QStringView severityText(Severity severity) {
    switch (severity) {
    case Severity::Info:
        return u"info";
    case Severity::Warning:
        return u"warning";
    case Severity::Error:
        break;
    }
    return u"error";
}

// Returns `text` in one line of limited length: it may come from the settings file.
QString inLine(const QString& text) {
    QString line = text.left(kMaxTextLength);
    for (QChar& character : line) {
        if (!character.isPrint()) {
            character = u' ';
        }
    }
    return text.size() > kMaxTextLength ? QString(line + u"...") : line;
}

// Returns "1 error" or "2 errors".
QString counted(qsizetype count, const QString& noun) {
    return QString::number(count) + u' ' + noun + (count == 1 ? u"" : u"s");
}

ravenjson::Value toValue(const QString& text) {
    return text.toStdString();
}

ravenjson::Value toValue(const Finding& finding) {
    ravenjson::Value object(ravenjson::Kind::Object);
    object["severity"] = toValue(severityText(finding.severity).toString());
    object["code"] = toValue(finding.code.toString());
    object["subject"] = toValue(finding.subject);
    object["value"] = toValue(finding.value);
    object["reason"] = toValue(finding.reason);
    object["action"] = toValue(finding.action);
    object["failsStart"] = finding.failsStart;
    return object;
}

} // namespace

qsizetype CheckedStart::count(Severity severity) const {
    return std::count_if(findings.begin(), findings.end(), [severity](const Finding& finding) {
        return finding.severity == severity;
    });
}

bool CheckedStart::failsStart() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.failsStart; });
}

QString describe(const Finding& finding) {
    QString line = inLine(finding.subject);
    if (!finding.value.isEmpty()) {
        line += u" = \"" + inLine(finding.value) + u'"';
    }
    line += u": " + inLine(finding.reason);
    if (!finding.action.isEmpty()) {
        line += (line.endsWith(u'.') ? u" " : u". ") + inLine(finding.action);
    }
    return line;
}

QString textReport(const CheckedStart& start) {
    QString report;
    for (const Finding& finding : start.findings) {
        report += severityText(finding.severity) + u' ' + finding.code + u": " + describe(finding) +
                  u'\n';
    }
    const QStringView outcome = start.failsStart() ? u"; the start would fail" : u"";
    return report + u"quorin-gateway: " + counted(start.count(Severity::Error), u"error"_s) +
           u", " + counted(start.count(Severity::Warning), u"warning"_s) + outcome + u'\n';
}

QByteArray jsonReport(const CheckedStart& start) {
    ravenjson::Value document(ravenjson::Kind::Object);
    document["settings"] = toValue(start.settings);
    document["group"] = toValue(start.group);
    document["errors"] = static_cast<std::int64_t>(start.count(Severity::Error));
    document["warnings"] = static_cast<std::int64_t>(start.count(Severity::Warning));
    document["failsStart"] = start.failsStart();
    ravenjson::Value& findings = document["findings"] = ravenjson::Value(ravenjson::Kind::Array);
    for (const Finding& finding : start.findings) {
        findings.append(toValue(finding));
    }
    return QByteArray::fromStdString(ravenjson::toString(document, ravenjson::kPretty)) + '\n';
}

} // namespace quorin
