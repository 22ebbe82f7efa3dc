#include "service_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorin {
namespace {

using testing::HasSubstr;
using Action = ServiceArguments::Action;

void expectParsed(const std::vector<std::string>& arguments, Action action, const char* name,
                  const char* settings, const char* group) {
    const auto parsed = parseServiceArguments(arguments);
    const auto* const result = std::get_if<ServiceArguments>(&parsed);
    ASSERT_NE(result, nullptr) << std::get<std::string>(parsed);
    EXPECT_EQ(result->action, action);
    EXPECT_EQ(result->name.toStdString(), name);
    EXPECT_EQ(result->settings.toStdString(), settings);
    EXPECT_EQ(result->group.toStdString(), group);
}

TEST(ServiceArgumentsTest, ParsesCommands) {
    expectParsed({"install", "my settings.xml", "primary"}, Action::Install, "QuorinGateway",
                 "my settings.xml", "primary");
    expectParsed({"install", "--name", "AZ-09_az", "s.xml", "secondary"}, Action::Install,
                 "AZ-09_az", "s.xml", "secondary");
    expectParsed({"run", "--name", "Other", "s.xml", "primary"}, Action::Run, "Other", "s.xml",
                 "primary");
    expectParsed({"uninstall"}, Action::Uninstall, "QuorinGateway", "", "");
    expectParsed({"uninstall", "--name", "Other"}, Action::Uninstall, "Other", "", "");
    expectParsed({"stop"}, Action::Stop, "QuorinGateway", "", "");
    expectParsed({"stop", "--name", "Other"}, Action::Stop, "Other", "", "");
}

TEST(ServiceArgumentsTest, ParsesOptionsOfInstall) {
    const auto parsed = parseServiceArguments(
        {"install", "--update", "--sample", "a sample.xml", "--name", "Other", "s.xml", "primary"});
    const auto* const result = std::get_if<ServiceArguments>(&parsed);
    ASSERT_NE(result, nullptr) << std::get<std::string>(parsed);
    EXPECT_TRUE(result->updates);
    EXPECT_EQ(result->sample.toStdString(), "a sample.xml");
    EXPECT_EQ(result->name.toStdString(), "Other");
    EXPECT_EQ(result->settings.toStdString(), "s.xml");
    const auto without = parseServiceArguments({"install", "s.xml", "primary"});
    EXPECT_FALSE(std::get<ServiceArguments>(without).updates);
    EXPECT_TRUE(std::get<ServiceArguments>(without).sample.isEmpty());
}

TEST(ServiceArgumentsTest, RefusesMalformedCommands) {
    const std::vector<std::vector<std::string>> malformed{
        {},
        {"start"},
        {"install"},
        {"install", "s.xml"},
        {"install", "s.xml", "Primary"},
        {"install", "s.xml", "primary", "more"},
        {"install", "", "primary"},
        {"install", "--nmae", "primary"},
        {"install", "--name"},
        {"install", "--name", "Other", "s.xml"},
        {"install", "--sample"},
        {"install", "--sample", "", "s.xml", "primary"},
        {"install", "s.xml", "primary", "--update"},
        {"run", "primary"},
        {"run", "--update", "s.xml", "primary"},
        {"run", "--sample", "a.xml", "s.xml", "primary"},
        {"uninstall", "--update"},
        {"uninstall", "s.xml"},
        {"uninstall", "--name"},
        {"stop", "--update"},
        {"stop", "s.xml"},
    };
    for (const auto& arguments : malformed) {
        EXPECT_TRUE(std::holds_alternative<std::string>(parseServiceArguments(arguments)))
            << testing::PrintToString(arguments);
    }
}

TEST(ServiceArgumentsTest, RefusesNamesThatNeedQuoting) {
    for (const std::string& name :
         {std::string(), std::string("a b"), std::string("a\\b"), std::string("a/b"),
          std::string("a\"b"), std::string("gr\u00f6\u00dfer"), std::string(81, 'a')}) {
        const auto parsed = parseServiceArguments({"uninstall", "--name", name});
        ASSERT_TRUE(std::holds_alternative<std::string>(parsed)) << name;
        EXPECT_THAT(std::get<std::string>(parsed), HasSubstr("'--name'"));
    }
}

} // namespace
} // namespace quorin
