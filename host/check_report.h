#pragma once

#include "check/finding.h"

#include <QByteArray>
#include <QString>

namespace quorin {

// What was checked.
struct CheckedStart {
    QString settings;
    QString group;
    check::Findings findings;

    [[nodiscard]] qsizetype count(check::Severity severity) const;
    [[nodiscard]] bool failsStart() const;
};

// Returns what a finding says, in one line without a line end: subject, value, reason, action.
[[nodiscard]] QString describe(const check::Finding& finding);

// Returns one line for each finding and a summary.
[[nodiscard]] QString textReport(const CheckedStart& start);

// Returns one JSON document (docs/check.md) with a line end.
[[nodiscard]] QByteArray jsonReport(const CheckedStart& start);

} // namespace quorin
