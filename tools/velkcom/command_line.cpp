#include "command_line.h"

#include <algorithm>
#include <optional>

namespace velk::velkcom {
namespace {

struct Words {
    std::vector<std::string> options;
    std::vector<std::string> operands;
};

// "-5" is a number to pass on, so only two dashes make an option.
Words sort(std::vector<std::string> const& arguments) {
    Words words;
    bool optionsEnded = false;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        std::string const& argument = arguments[i];
        if (optionsEnded || !argument.starts_with("--")) {
            words.operands.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else {
            words.options.push_back(argument);
        }
    }
    return words;
}

[[noreturn]] void refuseOption(std::string const& command, std::string const& option) {
    throw UsageError("\"" + command + "\" has no option \"" + option + "\"");
}

void requireOperands(std::string const& command, Words const& words, std::size_t least,
                     std::size_t most, char const* expected) {
    if (words.operands.size() < least) {
        throw UsageError("\"" + command + "\" needs " + expected);
    }
    if (words.operands.size() > most) {
        throw UsageError("\"" + command + "\" does not take the argument \"" +
                         words.operands[most] + "\"");
    }
}

Command parseRegister(std::string const& command, Words const& words) {
    RegisterCommand result;
    result.install = command == "register";
    for (auto const& option : words.options) {
        if (option != "--user") refuseOption(command, option);
        result.perUser = true;
    }
    requireOperands(command, words, 0, 1, "");
    if (!words.operands.empty()) {
        result.module = words.operands[0];
        if (result.module.empty()) throw UsageError("the path of the module is empty");
    }
    return result;
}

std::optional<Access> accessOption(std::string const& option) {
    if (option == "--method") return Access::method;
    if (option == "--get") return Access::get;
    if (option == "--put") return Access::put;
    if (option == "--putref") return Access::putReference;
    return std::nullopt;
}

Command parseCall(std::string const& command, Words const& words) {
    CallCommand result;
    for (auto const& option : words.options) {
        auto const access = accessOption(option);
        if (!access) refuseOption(command, option);
        if (result.access != Access::automatic && result.access != *access) {
            throw UsageError("\"" + option + "\" contradicts an option before it");
        }
        result.access = *access;
    }
    requireOperands(command, words, 2, words.operands.max_size(), "a PROGID and a MEMBER");
    result.progId = words.operands[0];
    result.member = words.operands[1];
    result.arguments.assign(words.operands.begin() + 2, words.operands.end());
    return result;
}

Command parseTypelib(std::string const& command, Words const& words) {
    if (!words.options.empty()) refuseOption(command, words.options[0]);
    requireOperands(command, words, 1, 1, "a FILE");
    return TypelibCommand{words.operands[0]};
}

Command parseEnum(std::string const& command, Words const& words) {
    if (!words.options.empty()) refuseOption(command, words.options[0]);
    requireOperands(command, words, 3, 3, "a FILE or PROGID, an ENUM and a CONSTANT");
    return EnumCommand{words.operands[0], words.operands[1], words.operands[2]};
}

struct PropsAction {
    char const* name;
    PropsCommand::Action action;
    std::size_t least;
    std::size_t most;
    char const* expected;
};

constexpr std::size_t anyNumber = static_cast<std::size_t>(-1);
constexpr PropsAction propsActions[] = {
    {"list", PropsCommand::Action::list, 1, anyNumber, "a FILE or FOLDER"},
    {"get", PropsCommand::Action::get, 3, 3, "a FILE, a SET and a KEY"},
    {"set", PropsCommand::Action::set, 4, 4, "a FILE, a SET, a KEY and a VALUE"},
    {"remove", PropsCommand::Action::remove, 3, 3, "a FILE, a SET and a KEY"},
    {"rename", PropsCommand::Action::rename, 4, 4, "a FILE, a SET, a KEY and a NEWKEY"},
    {"create", PropsCommand::Action::create, 1, 1, "a FILE"}};

/// Takes "--type T" out, which is the only option with a word of its own.
std::string takeType(std::vector<std::string>& arguments) {
    auto const end = std::ranges::find(arguments, "--");
    auto const option = std::find(arguments.begin(), end, "--type");
    if (option == end) return {};
    auto const type = option + 1;
    if (type == end) throw UsageError("\"--type\" needs a TYPE");
    std::string taken = *type;
    if (taken.empty()) throw UsageError("\"--type\" needs a TYPE");
    arguments.erase(option, type + 1);
    return taken;
}

Command parseProps(std::vector<std::string> arguments) {
    PropsCommand result;
    result.type = takeType(arguments);
    Words words = sort(arguments);
    if (words.operands.empty()) {
        throw UsageError("\"props\" needs list, get, set, remove, rename or create");
    }
    auto const* const found =
        std::ranges::find(propsActions, words.operands[0], &PropsAction::name);
    if (found == std::end(propsActions)) {
        throw UsageError("\"props\" has no \"" + words.operands[0] + "\"");
    }
    std::string const command = std::string("props ") + found->name;
    words.operands.erase(words.operands.begin());
    for (auto const& option : words.options) {
        if (option != "--json" || found->action != PropsCommand::Action::list) {
            refuseOption(command, option);
        }
        result.json = true;
    }
    if (!result.type.empty() && found->action != PropsCommand::Action::set) {
        refuseOption(command, "--type");
    }
    requireOperands(command, words, found->least, found->most, found->expected);
    result.action = found->action;
    result.operands = std::move(words.operands);
    return result;
}

}  // namespace

Command parseCommandLine(std::vector<std::string> const& arguments) {
    if (arguments.empty()) throw UsageError("no command");
    std::string const& command = arguments[0];
    if (command == "--version") return VersionCommand{};
    if (command == "--help" || command == "help") {
        return HelpCommand{arguments.size() > 1 ? arguments[1] : std::string()};
    }
    Words const words = sort(arguments);
    if (std::ranges::find(words.options, "--help") != words.options.end()) {
        return HelpCommand{command};
    }
    if (command == "register" || command == "unregister") return parseRegister(command, words);
    if (command == "call") return parseCall(command, words);
    if (command == "typelib") return parseTypelib(command, words);
    if (command == "enum") return parseEnum(command, words);
    if (command == "props") return parseProps(arguments);
    throw UsageError("unknown command \"" + command + "\"");
}

}  // namespace velk::velkcom
