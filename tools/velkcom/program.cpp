#include "program.h"

#include <sstream>

#include "com/error.h"
#include "command_line.h"
#include "commands/commands.h"
#include "help_text.h"
#include "system.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

// One call operator a command; each gives the exit code.
class Runner {
  public:
    Runner(std::ostream& out, std::ostream& errors) : out_(out), errors_(errors) {}

    int operator()(HelpCommand const& command) const {
        out_ << helpText(command.topic);
        return 0;
    }
    int operator()(VersionCommand const&) const {
        out_ << "velkcom " VELKCOM_VERSION "\n";
        return 0;
    }
    int operator()(RegisterCommand const& command) const {
        return runRegister(command, out_, errors_);
    }
    int operator()(CallCommand const& command) const { return runCall(command, out_, errors_); }
    int operator()(TypelibCommand const& command) const {
        return runTypelib(command, out_, errors_);
    }
    int operator()(EnumCommand const& command) const { return runEnum(command, out_, errors_); }
    int operator()(PropsCommand const& command) const { return runProps(command, out_, errors_); }

  private:
    std::ostream& out_;
    std::ostream& errors_;
};

int runCommand(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& errors) {
    try {
        int const code = std::visit(Runner(out, errors), parseCommandLine(arguments));
        if (out.flush()) return code;
        errors << "velkcom: the result cannot be written\n";
    } catch (UsageError const& error) {
        errors << "velkcom: " << error.what() << "\n"
               << "\"velkcom --help\" shows what it understands\n";
        return 2;
    } catch (com::Error const& error) {
        errors << "velkcom: " << withMeaning(error) << "\n";
    } catch (std::exception const& error) {
        errors << "velkcom: " << error.what() << "\n";
    }
    return 1;
}

}  // namespace

int runProgram(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& errors) {
    int const code = runCommand(arguments, out, errors);
    std::istringstream problems(registryProblems());
    for (std::string line; std::getline(problems, line);) errors << "velkcom: " << line << '\n';
    return code;
}

}  // namespace velk::velkcom
