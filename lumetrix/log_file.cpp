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

namespace lumetrix2 {
namespace {

namespace fs = std::filesystem;

// True for the name of a day's file: the base name and a date.
bool isDayFile(const fs::path& name, const fs::path& baseName) {
    constexpr std::string_view kShape = "_0000-00-00.log";
    const auto& text = name.native();
    const auto& base = baseName.native();
    return text.size() == base.size() + kShape.size() && text.starts_with(base) &&
           std::equal(
               kShape.begin(), kShape.end(), text.end() - kShape.size(),
               [](char shape, auto c) { return shape == '0' ? '0' <= c && c <= '9' : c == shape; });
}

// spdlog's own count of daily files ends at the first day without one; a gateway that rests over
// the weekend would never lose its old files.
void removeOldDays(const fs::path& current, const fs::path& baseName, int filesKept) {
    if (filesKept < 1) {
        return;
    }
    std::vector<fs::path> others;
    std::error_code error;
    for (fs::directory_iterator entry(current.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename();
        if (name != current.filename() && isDayFile(name, baseName)) {
            others.push_back(entry->path());
        }
    }
    const auto othersKept = static_cast<std::size_t>(filesKept) - 1;
    if (others.size() <= othersKept) {
        return;
    }
    std::sort(others.begin(), others.end(), std::greater<>{}); // names sort as their dates do
    std::for_each(others.begin() + static_cast<std::ptrdiff_t>(othersKept), others.end(),
                  [&error](const fs::path& old) { fs::remove(old, error); });
}

void removeBeyond(const fs::path& file, std::size_t filesKept) {
    std::error_code error;
    for (auto index = filesKept; fs::remove(
             spdlog::sinks::rotating_file_sink_st::calc_filename(file.native(), index), error);
         ++index) {
    }
}

void endTornLine(const fs::path& file, std::FILE* stream) {
    std::ifstream written(file, std::ios::binary | std::ios::ate);
    if (written.tellg() <= 0) {
        return;
    }
    written.seekg(-1, std::ios::end);
    if (written.get() != '\n') {
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
        handlers.after_open = endTornLine;
        const auto filesKept = static_cast<std::size_t>(std::clamp(rotation.filesKept, 1, 200000));
        sink = std::make_shared<spdlog::sinks::rotating_file_sink_st>(
            file.native(), *rotation.maxBytes, filesKept - 1, false, handlers);
        removeBeyond(file, filesKept);
    } else {
        handlers.after_open = [baseName, filesKept = rotation.filesKept](const fs::path& opened,
                                                                         std::FILE* stream) {
            endTornLine(opened, stream);
            removeOldDays(opened, baseName, filesKept);
        };
        sink = std::make_shared<spdlog::sinks::daily_file_sink_st>(file.native(), 0, 0, false,
                                                                   std::uint16_t{0}, handlers);
    }
    sink->set_formatter(makeLineFormatter(kLinePattern));
    return sink;
}

} // namespace lumetrix2
