#include "commands/CParser.h"

#include "commands/Suggestion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <functional>

COption& COption::Named(const char* value)
{
    mOption->type_name(value);
    return *this;
}

COption& COption::TakesOne()
{
    mOption->allow_extra_args(false);
    return *this;
}

/// A check whose message repeats the text.
/// @param description  what help says of the values
static CLI::Validator MakeCheck(std::function<std::string(const std::string&)> check, const std::string& description)
{
    return CLI::Validator(
        [check = std::move(check)](const std::string& text) {
            const std::string problem = check(text);
            return problem.empty() ? problem : "'" + text + "' " + problem;
        },
        description);
}

COption& COption::OneOf(const std::vector<std::string>& texts)
{
    const auto check = [texts](const std::string& text) -> std::string {
        if (std::find(texts.begin(), texts.end(), text) != texts.end()) {
            return {};
        }
        std::string all;
        for (const std::string& one : texts) {
            all += (all.empty() ? "" : ", ") + one;
        }
        return "is none of " + all + Suggestion::Ask(text, texts);
    };
    mOption->check(MakeCheck(check, CLI::IsMember(texts).get_description()));
    return *this;
}

COption& COption::Between(long long least, long long most)
{
    const auto check = [least, most](const std::string& text) -> std::string {
        long long number = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isNumber = result.ec == std::errc() && result.ptr == text.data() + text.size();
        return isNumber && number >= least && number <= most
                   ? ""
                   : "is no whole number from " + std::to_string(least) + " to " + std::to_string(most);
    };
    mOption->check(MakeCheck(check, CLI::Range(least, most).get_description()));
    return *this;
}

COption& COption::Checked(std::string (*check)(const std::string& text))
{
    mOption->check(MakeCheck(check, ""));
    return *this;
}

COption& COption::OrFrom(const char* variable)
{
    mOption->envname(variable);
    return *this;
}

COption& COption::Without(const COption& other)
{
    mOption->excludes(other.mOption);
    return *this;
}

CParser::CParser(const std::string& summary, const std::string& name, const std::string& version)
    : mApp(std::make_unique<CLI::App>(summary, name))
{
    mApp->set_help_flag("-h,--help", "Show this");
    mApp->set_version_flag("-V,--version", version, "Show the version");
}

CParser::~CParser() = default;

COption CParser::Add(const char* names, std::string& value, const std::string& help)
{
    return COption(mApp->add_option(names, value, help));
}

COption CParser::Add(const char* names, std::vector<std::string>& values, const std::string& help)
{
    return COption(mApp->add_option(names, values, help));
}

COption CParser::Add(const char* names, unsigned& value, const std::string& help)
{
    return COption(mApp->add_option(names, value, help));
}

COption CParser::Add(const char* names, long long& value, const std::string& help)
{
    return COption(mApp->add_option(names, value, help));
}

COption CParser::Add(const char* names, double& value, const std::string& help)
{
    return COption(mApp->add_option(names, value, help));
}

COption CParser::AddFlag(const char* names, bool& value, const std::string& help)
{
    return COption(mApp->add_flag(names, value, help));
}

void CParser::SetFooter(const std::string& text)
{
    mApp->footer(text);
}

bool CParser::HasOption(const std::string& name) const
{
    return mApp->get_option_no_throw(name) != nullptr;
}

std::string CParser::GetHelp() const
{
    return mApp->help();
}

/// What is wrong where words were left over. @return empty unless one of them looks like an option
std::string CParser::DescribeUnknown() const
{
    std::vector<std::string> names;
    for (const CLI::Option* option : mApp->get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    for (const std::string& word : mApp->remaining()) {
        if (word.size() > 1 && word[0] == '-') {
            const std::string name = word.substr(0, word.find('='));
            return "there is no option '" + name + "'" + Suggestion::Ask(name, names);
        }
    }
    return {};
}

CParser::eResult CParser::Parse(std::vector<std::string> arguments, std::string& problem)
{
    std::reverse(arguments.begin(), arguments.end()); // as it wants them
    try {
        mApp->parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        return eResult::kHelpWanted;
    } catch (const CLI::CallForVersion&) {
        return eResult::kVersionWanted;
    } catch (const CLI::ExtrasError& error) {
        const std::string unknown = DescribeUnknown();
        problem = unknown.empty() ? error.what() : unknown;
        return eResult::kWrong;
    } catch (const CLI::ParseError& error) {
        problem = error.what();
        return eResult::kWrong;
    }
    return eResult::kParsed;
}
