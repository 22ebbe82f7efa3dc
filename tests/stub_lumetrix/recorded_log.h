#pragma once

#include "platform/shared_library.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QTemporaryDir>

#include <map>
#include <string>
#include <vector>

namespace quorin::test {

// Records the messages written to the gateway's log during its lifetime. For test programs that
// link quorin_stub_lumetrix_paths. Only one object may exist at a time, and the first one must be
// created before the first message is logged.
class RecordedLog {
public:
    RecordedLog() {
        // Once the stub is loaded, the loader returns it for the bare file name too.
        static const platform::SharedLibrary stub =
            platform::SharedLibrary::load(QUORIN_STUB_LUMETRIX);
        qputenv(kRecordVariable, path().toUtf8());
    }
    ~RecordedLog() { qunsetenv(kRecordVariable); }

    RecordedLog(const RecordedLog&) = delete;
    RecordedLog& operator=(const RecordedLog&) = delete;

    // Returns the messages with their levels, such as "info: started". Tabs, line feeds and
    // backslashes of a message are escaped with a backslash.
    [[nodiscard]] std::vector<std::string> lines() const {
        static const std::map<QByteArray, std::string> levels{
            {"2", "debug"}, {"3", "info"}, {"4", "warn"}, {"5", "error"}};
        std::vector<std::string> lines;
        QFile file(path());
        if (!file.open(QIODevice::ReadOnly)) {
            return lines;
        }
        for (const QByteArray& call : file.readAll().split('\n')) {
            const QList<QByteArray> fields = call.split('\t');
            if (fields.size() == 5 && fields[0] == "log") {
                lines.push_back(levels.at(fields[3]) + ": " + fields[4].toStdString());
            }
        }
        return lines;
    }

    // The file in which the stub records its calls.
    [[nodiscard]] QString path() const { return folder_.filePath(QStringLiteral("calls")); }

private:
    static constexpr const char* kRecordVariable = "QUORIN_STUB_LOG";

    QTemporaryDir folder_;
};

} // namespace quorin::test
