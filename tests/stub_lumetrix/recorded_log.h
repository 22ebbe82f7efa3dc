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

// The lines that the gateway's one log is given while the object lives, in a test program that
// links to quorin_stub_lumetrix_paths. One object at a time.
class RecordedLog {
public:
    RecordedLog() {
        // Loaded from where it is, it is what the log finds later under the bare name.
        static const platform::SharedLibrary stub =
            platform::SharedLibrary::load(QUORIN_STUB_LUMETRIX);
        qputenv(kRecordVariable, path().toUtf8());
    }
    ~RecordedLog() { qunsetenv(kRecordVariable); }

    RecordedLog(const RecordedLog&) = delete;
    RecordedLog& operator=(const RecordedLog&) = delete;

    // Each line as its level, a colon, a space and the text, as in "info: started"; tabs, line
    // feeds and back-slashes of the text are escaped.
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

    // The file that the stub writes its calls into.
    [[nodiscard]] QString path() const { return folder_.filePath(QStringLiteral("calls")); }

private:
    static constexpr const char* kRecordVariable = "QUORIN_STUB_LOG";

    QTemporaryDir folder_;
};

} // namespace quorin::test
