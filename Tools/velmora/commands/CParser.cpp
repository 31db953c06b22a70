#include "commands/CParser.h"

#include <CLI/CLI.hpp>
#include <algorithm>

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

COption& COption::OneOf(const std::vector<std::string>& texts)
{
    mOption->check(CLI::IsMember(texts));
    return *this;
}

COption& COption::Between(long long least, long long most)
{
    mOption->check(CLI::Range(least, most));
    return *this;
}

COption& COption::Checked(std::string (*check)(const std::string& text))
{
    mOption->check(CLI::Validator([check](const std::string& text) { return check(text); }, ""));
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

CParser::eResult CParser::Parse(std::vector<std::string> arguments, std::string& problem)
{
    std::reverse(arguments.begin(), arguments.end()); // as it wants them
    try {
        mApp->parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        return eResult::kHelpWanted;
    } catch (const CLI::CallForVersion&) {
        return eResult::kVersionWanted;
    } catch (const CLI::ParseError& error) {
        problem = error.what();
        return eResult::kWrong;
    }
    return eResult::kParsed;
}
