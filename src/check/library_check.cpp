#include "check/library_check.h"

#include "check/finding_codes.h"
#include "platform/folders.h"
#include "platform/shared_library.h"

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

// Returns why the library cannot be used, or an empty text.
QString faultOf(const char* libraryName, const char* functionName) {
    const auto library = platform::SharedLibrary::load(libraryName);
    if (!library) {
        return QString::fromUtf8(platform::SharedLibrary::lastError());
    }
    return library.function<void()>(functionName) == nullptr
               ? u"it has no function "_s + QString::fromUtf8(functionName)
               : QString();
}

} // namespace

void checkLibraries(Findings& findings) {
    Finding finding;
    finding.failsStart = true;
    finding.action = u"Install the program again, with all its files in one folder."_s;
    finding.subject = QString::fromUtf8(platform::gatewayLibraryName());
    finding.reason = faultOf(platform::gatewayLibraryName(), "QuorinGatewayHttpMainFunc");
    if (!finding.reason.isEmpty()) {
        finding.code = code::kGatewayLibraryMissing;
        findings.push_back(finding);
    }
    if (!platform::shellFoldersAvailable()) {
        finding.code = code::kSystemLibraryMissing;
        finding.subject = u"shell32.dll"_s;
        finding.reason = u"the system library cannot be loaded"_s;
        finding.action = u"Repair the system."_s;
        findings.push_back(finding);
    }
    finding.subject = QString::fromUtf8(platform::loggingLibraryName());
    finding.reason = faultOf(platform::loggingLibraryName(), "lumetrix_log");
    if (!finding.reason.isEmpty()) {
        finding.severity = Severity::Warning;
        finding.code = code::kLoggingLibraryMissing;
        finding.reason = u"nothing is logged: "_s + finding.reason;
        finding.action = u"Install the logging library in the folder of the gateway library."_s;
        finding.failsStart = false;
        findings.push_back(finding);
    }
}

} // namespace quorin::check
