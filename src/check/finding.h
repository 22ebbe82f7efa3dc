#pragma once

#include <QString>
#include <QStringView>

#include <vector>

// Checks whether a gateway would start and serve on this machine, without starting one.
namespace quorin::check {

enum class Severity { Info, Warning, Error };

// One result of a check. The texts are complete for an administrator and are not translated.
struct Finding {
    Severity severity = Severity::Error;
    QStringView code; // one of check/finding_codes.h
    QString subject;  // the path of an element of the settings file, a file, a folder or a name
    QString value;    // the value that was found; may be empty
    QString reason;   // what is wrong; the gateway's log message if it logs one
    QString action;   // what to do; empty if nothing
    // True if the gateway would not start. False for a running gateway, which may end in time.
    bool failsStart = false;
};

using Findings = std::vector<Finding>;

} // namespace quorin::check
