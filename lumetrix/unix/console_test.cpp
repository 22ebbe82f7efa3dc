#include "log_directory.h"
#include "lumetrix.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

using testing::HasSubstr;

// Redirects standard output to a pseudo-terminal for the lifetime of the object.
class Terminal {
public:
    Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)), stdout_(dup(STDOUT_FILENO)) {
        std::array<char, 128> name{};
        if (grantpt(master_) == 0 && unlockpt(master_) == 0 &&
            ptsname_r(master_, name.data(), name.size()) == 0) {
            slave_ = open(name.data(), O_RDWR | O_NOCTTY);
            dup2(slave_, STDOUT_FILENO);
        }
    }

    ~Terminal() {
        restore();
        close(stdout_);
        close(master_);
        close(slave_);
    }

    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool isReady() const { return isatty(STDOUT_FILENO) == 1; }

    // Restores standard output and returns what was written to the terminal.
    std::string output() {
        restore();
        std::array<char, 4096> text{};
        const auto size = read(master_, text.data(), text.size());
        return {text.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
    }

private:
    void restore() { dup2(stdout_, STDOUT_FILENO); }

    int master_;
    int stdout_;
    int slave_ = -1;
};

TEST(ConsoleTest, ColoursLevelOnTerminal) {
    setenv("TERM", "xterm", 1);
    const LogDirectory log;
    auto* const logger = lumetrix_get_logger();
    lumetrix_set_output_dir(logger, log.utf8().c_str(), "Gateway");
    Terminal terminal;
    if (!terminal.isReady()) {
        GTEST_SKIP() << "cannot open a pseudo-terminal";
    }
    lumetrix_set_enabled_console_out(logger, 1);
    lumetrix_log(logger, "GW", LUMETRIX_ERROR, "red");
    lumetrix_sync(logger);
    const auto shown = terminal.output();
    lumetrix_release(logger);
    EXPECT_THAT(shown, HasSubstr("\t_l:\x1b[31m\x1b[1merror\x1b[m\t_th:"));
    EXPECT_THAT(shown, HasSubstr("\tmsg:red"));
    EXPECT_THAT(log.messages(), testing::ElementsAre("red")); // no colour in the file
}

} // namespace
