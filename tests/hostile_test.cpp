// Hostile and faulty clients. Each file in tests/hostile/ is a case.

#include "hostile/case_file.h"
#include "support/certificate_store.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/process_figures.h"
#include "support/raw_socket.h"
#include "support/serving_test.h"
#include "support/site.h"
#include "support/system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

constexpr qint64 kKiB = 1024;
constexpr qint64 kMiB = 1024 * kKiB;

// Maximum memory growth of the gateway in one case. Allows for memory kept for reuse.
constexpr qint64 kAllowedGrowth = 4 * kMiB;

const QByteArray kProbeTarget = "/fwfiles/probe";

// Returns 300,007 bytes whose pattern does not repeat at any buffer size, so that misplaced blocks
// are detected.
QByteArray probeContent() {
    QByteArray content(300'007, Qt::Uninitialized);
    for (qsizetype i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 31 % 251 + i / 65'537);
    }
    return content;
}

class HostileTest : public testing::TestWithParam<std::filesystem::path> {
protected:
    using Handler = void (HostileTest::*)(const Step&);

    static const std::map<std::string_view, Handler>& handlers() {
        static const std::map<std::string_view, Handler> all{
            {"system", &HostileTest::ignore},
            {"settings", &HostileTest::settings},
            {"file", &HostileTest::file},
            {"connect", &HostileTest::connect},
            {"hold", &HostileTest::hold},
            {"release", &HostileTest::release},
            {"send", &HostileTest::send},
            {"half-close", &HostileTest::halfClose},
            {"reset", &HostileTest::reset},
            {"leave", &HostileTest::leave},
            {"expect", &HostileTest::expect},
            {"expect-begin", &HostileTest::expectBegin},
            {"expect-part", &HostileTest::expectPart},
            {"expect-file", &HostileTest::expectFile},
        };
        return all;
    }

    void ignore(const Step&) {} // casesOfThisSystem() reads the step

    void settings(const Step& step) {
        const std::map<QByteArray, QByteArray*> known{
            {"MaxUserSession", &settings_.MaxUserSession},
            {"ConnectionTimeout", &settings_.ConnectionTimeout},
            {"ThreadReadBufferSize", &settings_.ThreadReadBufferSize},
            {"HttpsEnabled", &settings_.HttpsEnabled},
        };
        ASSERT_TRUE(known.contains(step.argument)) << "line " << step.line;
        *known.at(step.argument) = step.bytes;
    }

    void file(const Step& step) { site_.writeFile(QString::fromUtf8(step.argument), step.bytes); }

    void connect(const Step&) { client_ = std::make_unique<Client>(site_.port()); }

    void hold(const Step& step) {
        const int count = step.argument.toInt();
        for (int i = 0; i < count; ++i) {
            held_.push_back(std::make_unique<Client>(site_.port()));
        }
        const int workers = std::min(count, settings_.MaxUserSession.toInt());
        ASSERT_TRUE(waitUntil([&] { return runningWorkers() >= workers; }));
    }

    void release(const Step&) { held_.clear(); }

    void send(const Step& step) { client().send(step.bytes); }

    void halfClose(const Step& step) {
        EXPECT_TRUE(shutdownSending(client().socket().socketDescriptor())) << "line " << step.line;
    }

    void reset(const Step& step) {
        EXPECT_TRUE(resetOnClose(client().socket().socketDescriptor())) << "line " << step.line;
        leave(step);
    }

    void leave(const Step&) {
        client().abort();
        client_.reset();
    }

    void expect(const Step& step) {
        EXPECT_EQ(client().readToEnd(), step.bytes) << "line " << step.line;
        client_.reset();
    }

    void expectBegin(const Step& step) {
        EXPECT_EQ(client().read(step.bytes.size()), step.bytes) << "line " << step.line;
    }

    void expectPart(const Step& step) {
        const QByteArray received = client().readToEnd();
        EXPECT_TRUE(step.bytes.startsWith(received))
            << "line " << step.line << ": " << received.toHex().toStdString();
        client_.reset();
    }

    void expectFile(const Step& step) {
        EXPECT_EQ(site_.readFile(QString::fromUtf8(step.argument)), step.bytes)
            << "line " << step.line;
    }

    Transport transport() const {
        return settings_.HttpsEnabled == "true" ? Transport::Tls : Transport::Plain;
    }

    Client& client() {
        if (!client_) {
            client_ = std::make_unique<Client>(site_.port());
        }
        return *client_;
    }

    // Starts the gateway after the settings and files, which come first.
    void runCase(const std::vector<Step>& steps) {
        const auto isPreparation = [](const Step& step) {
            return step.verb == "system" || step.verb == "settings" || step.verb == "file";
        };
        const auto begin = std::find_if_not(steps.begin(), steps.end(), isPreparation);
        std::for_each(steps.begin(), begin, [this](const Step& step) { run(step); });
        startGateway();
        std::for_each(begin, steps.end(), [this](const Step& step) { run(step); });
    }

    void run(const Step& step) {
        if (!HasFatalFailure()) {
            const auto handler = handlers().find(step.verb);
            ASSERT_TRUE(handler != handlers().end())
                << "line " << step.line << ": " << step.verb << " is not a step";
            (this->*handler->second)(step);
        }
    }

    void startGateway() {
        site_.writeFile(QString::fromUtf8(kProbeTarget), probeContent());
        if (transport() == Transport::Tls) {
            installCertificate(site_, settings_.GatewayAddress);
        }
        site_.writeSettings(settings_);
        gateway_.start();
        expectService(); // allocates what the gateway keeps, so that figuresBefore_ includes it
        figuresBefore_ = processFigures(gateway_.processId());
    }

    void expectService() const {
        const QByteArray content = probeContent();
        EXPECT_EQ(exchange(site_.port(), get(kProbeTarget), transport()),
                  "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(content.size()) +
                      "\r\nContent-Type: inode/directory\r\n\r\n" + content);
    }

    int runningWorkers() const {
        const QStringList logged = site_.logged();
        return int(logged.count(kRunStarts) - logged.count(kRunEnds));
    }

    void expectNoRunningWorkers() const {
        EXPECT_TRUE(waitUntil([this] { return runningWorkers() == 0; }));
    }

    void expectNoResourceGrowth() const {
        const std::optional<ProcessFigures> after = processFigures(gateway_.processId());
        ASSERT_TRUE(after && figuresBefore_);
        EXPECT_TRUE(waitUntil([this] {
            return processFigures(gateway_.processId())->descriptors <=
                   figuresBefore_->descriptors + kDescriptorsOpenedLate + openedByThreads();
        })) << after->descriptors
            << " descriptors after " << figuresBefore_->descriptors << ", " << after->threads
            << " threads after " << figuresBefore_->threads << '\n'
            << describeDescriptors(gateway_.processId());
        // Sanitizers delay freeing memory, so growth means nothing.
        if (!QUORIN_IS_SANITIZED) {
            EXPECT_LE(after->privateBytes - figuresBefore_->privateBytes,
                      kAllowedGrowth + kMemoryPerThread * newThreads());
        }
    }

    // The greatest number of descriptors that new pool threads keep open for their event loops,
    // until the threads expire.
    int openedByThreads() const { return kDescriptorsPerThread * newThreads(); }

    int newThreads() const {
        return processFigures(gateway_.processId())->threads - figuresBefore_->threads;
    }

    Settings settings_ = [] {
        Settings settings;
        settings.ConnectionTimeout = "2";
        return settings;
    }();
    Site site_;
    Gateway gateway_{site_};
    std::unique_ptr<Client> client_;
    std::vector<std::unique_ptr<Client>> held_;
    std::optional<ProcessFigures> figuresBefore_;
};

struct CaseName {
    std::string operator()(const testing::TestParamInfo<std::filesystem::path>& info) const {
        std::string name = info.param.stem().string();
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    }
};

bool isForThisSystem(const std::filesystem::path& path) {
    try {
        const std::vector<Step> steps = readCase(path);
        return steps.empty() || steps.front().verb != "system" ||
               (steps.front().argument == "windows") == kOnWindows;
    } catch (const std::exception&) {
        return true; // the test fails
    }
}

std::vector<std::filesystem::path> casesOfThisSystem() {
    std::vector<std::filesystem::path> paths = findCases(QUORIN_HOSTILE_FOLDER);
    std::erase_if(paths, [](const auto& path) { return !isForThisSystem(path); });
    return paths;
}

INSTANTIATE_TEST_SUITE_P(Cases, HostileTest, testing::ValuesIn(casesOfThisSystem()), CaseName());

TEST_P(HostileTest, GatewaySurvivesClient) {
    std::vector<Step> steps;
    ASSERT_NO_THROW(steps = readCase(GetParam()));
    runCase(steps);
    client_.reset();
    held_.clear();
    expectNoRunningWorkers();
    expectService();
    expectNoResourceGrowth();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

} // namespace
} // namespace quorin::test
