// What reads a command's options. A thin cover: the library behind it is headers only, which take a compiler half a
// minute where they are checked for addresses, and so are included once.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

/// An option that was added. The parser owns what it points to.
class COption {
public:
    explicit COption(CLI::Option* option) : mOption(option) {}

    /// What its value is called in the help: FILE.
    COption& Named(const char* value);
    /// One value each time it is given, or it would take the operands behind it as well.
    COption& TakesOne();
    /// Its value is one of these texts.
    COption& OneOf(const std::vector<std::string>& texts);
    /// Its value is a whole number within these.
    COption& Between(long long least, long long most);
    /// @param check  answers what is wrong with a text ("is no size"), empty for nothing; the message repeats the text
    COption& Checked(std::string (*check)(const std::string& text));
    /// The environment variable that is taken where the option is not given.
    COption& OrFrom(const char* variable);
    /// It does not go together with another one.
    COption& Without(const COption& other);

private:
    CLI::Option* mOption;
};

class CParser {
public:
    enum class eResult { kParsed, kHelpWanted, kVersionWanted, kWrong };

    /// @param summary  what help begins with
    CParser(const std::string& summary, const std::string& name, const std::string& version);
    CParser(const CParser&) = delete;
    CParser& operator=(const CParser&) = delete;
    ~CParser();

    /// An option with a value, or an operand where the name has no dash. The variable holds the default, outlives the
    /// parser, and is set by it.
    COption Add(const char* names, std::string& value, const std::string& help);
    COption Add(const char* names, std::vector<std::string>& values, const std::string& help);
    COption Add(const char* names, unsigned& value, const std::string& help);
    COption Add(const char* names, long long& value, const std::string& help);
    COption Add(const char* names, double& value, const std::string& help);
    /// An option without a value.
    COption AddFlag(const char* names, bool& value, const std::string& help);
    /// What stands at the end of the help.
    void SetFooter(const std::string& text);

    bool HasOption(const std::string& name) const;
    std::string GetHelp() const;
    /// @param arguments  without the program's name
    /// @param problem    for kWrong: what is wrong
    eResult Parse(std::vector<std::string> arguments, std::string& problem);

private:
    std::string DescribeUnknown() const;

    std::unique_ptr<CLI::App> mApp;
};
