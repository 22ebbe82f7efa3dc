#include "log_file.h"

#include "line_format.h"

#include <spdlog/sinks/daily_file_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string_view>
#include <system_error>
#include <vector>

namespace lumetrix {
namespace {

namespace fs = std::filesystem;

bool isDailyFile(const fs::path& name, const fs::path& baseName) {
    constexpr std::string_view kPattern = "_0000-00-00.log";
    const auto& text = name.native();
    const auto& base = baseName.native();
    return text.size() == base.size() + kPattern.size() && text.starts_with(base) &&
           std::equal(kPattern.begin(), kPattern.end(), text.end() - kPattern.size(),
                      [](char expected, auto c) {
                          return expected == '0' ? '0' <= c && c <= '9' : c == expected;
                      });
}

// Used instead of the file limit of spdlog's daily sink, which stops looking at the first day
// without a file and would never remove the files before it.
void removeOldDailyFiles(const fs::path& current, const fs::path& baseName, int filesKept) {
    if (filesKept < 1) {
        return;
    }
    std::vector<fs::path> others;
    std::error_code error;
    for (fs::directory_iterator entry(current.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename();
        if (name != current.filename() && isDailyFile(name, baseName)) {
            others.push_back(entry->path());
        }
    }
    const auto othersKept = static_cast<std::size_t>(filesKept) - 1;
    if (others.size() <= othersKept) {
        return;
    }
    std::sort(others.begin(), others.end(), std::greater<>{}); // newest first: names sort by date
    std::for_each(others.begin() + static_cast<std::ptrdiff_t>(othersKept), others.end(),
                  [&error](const fs::path& old) { fs::remove(old, error); });
}

// Removes files beyond `filesKept`, left by a run with a higher limit.
void removeExcessFiles(const fs::path& file, std::size_t filesKept) {
    std::error_code error;
    for (auto index = filesKept; fs::remove(
             spdlog::sinks::rotating_file_sink_st::calc_filename(file.native(), index), error);
         ++index) {
    }
}

void terminateIncompleteLine(const fs::path& file, std::FILE* stream) {
    std::ifstream existing(file, std::ios::binary | std::ios::ate);
    if (existing.tellg() <= 0) {
        return;
    }
    existing.seekg(-1, std::ios::end);
    if (existing.get() != '\n') {
        static_cast<void>(std::fputs(spdlog::details::os::default_eol, stream));
    }
}

} // namespace

std::shared_ptr<spdlog::sinks::sink>
openLogFile(const fs::path& directory, const fs::path& baseName, const Rotation& rotation) {
    auto file = (directory.empty() ? fs::path(".") : directory) / baseName;
    file += ".log";

    spdlog::file_event_handlers handlers;
    std::shared_ptr<spdlog::sinks::sink> sink;
    if (rotation.maxBytes) {
        handlers.after_open = terminateIncompleteLine;
        const auto filesKept = static_cast<std::size_t>(std::clamp(rotation.filesKept, 1, 200000));
        sink = std::make_shared<spdlog::sinks::rotating_file_sink_st>(
            file.native(), *rotation.maxBytes, filesKept - 1, false, handlers);
        removeExcessFiles(file, filesKept);
    } else {
        handlers.after_open = [baseName, filesKept = rotation.filesKept](const fs::path& opened,
                                                                         std::FILE* stream) {
            terminateIncompleteLine(opened, stream);
            removeOldDailyFiles(opened, baseName, filesKept);
        };
        sink = std::make_shared<spdlog::sinks::daily_file_sink_st>(file.native(), 0, 0, false,
                                                                   std::uint16_t{0}, handlers);
    }
    sink->set_formatter(makeLineFormatter(kLinePattern));
    return sink;
}

} // namespace lumetrix
