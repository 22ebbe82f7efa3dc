#pragma once

#include "log/lumetrix_logger.h"

#include <QString>

#include <vector>

namespace quorin {

// Collects the log lines of this process instead of passing them to the logging library, which is
// then not loaded. For programs that use parts of the gateway without running one.
//
// At most one object exists at a time. While it exists, and while it is constructed and destroyed,
// no other thread may log.
class LogCapture {
public:
    struct Line {
        lumetrix::Level level = lumetrix::Level::Debug;
        QString message;
    };

    LogCapture();
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Returns the object that exists, or null.
    [[nodiscard]] static LogCapture* active() noexcept;

    void add(lumetrix::Level level, const QString& message) { lines_.push_back({level, message}); }
    [[nodiscard]] const std::vector<Line>& lines() const noexcept { return lines_; }

private:
    std::vector<Line> lines_;
};

} // namespace quorin
