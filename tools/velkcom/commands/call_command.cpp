#include "commands/commands.h"

#include "commands/member_call.h"
#include "commands/object_creation.h"
#include "text/member_path.h"
#include "text/result_codes.h"
#include "text/result_text.h"
#include "text/typed_value.h"

namespace velk::velkcom {
namespace {

using com::ComPtr;
using com::Variant;

struct PreparedStep {
    std::string name;
    std::vector<Variant> arguments;
};

// Everything that can be wrong with the command line is found before any
// object is made.
std::vector<PreparedStep> prepare(CallCommand const& command) {
    auto steps = parseMemberPath(command.member);
    for (auto const& argument : command.arguments) {
        steps.back().arguments.push_back({argument, false});
    }
    bool const put = command.access == Access::put || command.access == Access::putReference;
    if (put && steps.back().arguments.empty()) {
        throw UsageError("a property to write needs its new value as the last argument");
    }
    std::vector<PreparedStep> prepared;
    for (auto const& step : steps) {
        PreparedStep next{step.name, {}};
        for (auto const& argument : step.arguments) next.arguments.push_back(readValue(argument));
        prepared.push_back(std::move(next));
    }
    return prepared;
}

// The object in a result, to go on with.
ComPtr<IDispatch> objectIn(Variant const& result, std::string const& gaveIt,
                           std::string const& next) {
    VARIANT const& value = result.get();
    ComPtr<IDispatch> object;
    if (value.vt == VT_DISPATCH) object = ComPtr<IDispatch>(value.pdispVal);
    if (value.vt == VT_UNKNOWN) {
        object = ComPtr<IUnknown>(value.punkVal).query<IDispatch>(IID_IDispatch);
    }
    if (object) return object;
    throw CallFailure("\"" + gaveIt + "\" gave " + resultText(value) +
                      ", not an object with a member \"" + next + "\"");
}

Variant followPath(ComPtr<IDispatch> object, std::vector<PreparedStep> const& steps,
                   Access access) {
    Variant result;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        bool const last = i + 1 == steps.size();
        auto const& step = steps[i];
        try {
            result = callMember(object.get(), step.name, step.arguments,
                                last ? access : Access::automatic);
        } catch (CallFailure const& failure) {
            throw CallFailure("\"" + step.name + "\": " + failure.what());
        }
        if (!last) object = objectIn(result, step.name, steps[i + 1].name);
    }
    return result;
}

}  // namespace

int runCall(CallCommand const& command, std::ostream& out, std::ostream& errors) {
    auto const steps = prepare(command);
    ComSession const session;
    try {
        Variant const result = followPath(createObject(command.progId), steps, command.access);
        out << resultText(result.get()) << "\n";
        return 0;
    } catch (CallFailure const& failure) {
        errors << "velkcom: " << failure.what() << "\n";
        return 1;
    }
}

}  // namespace velk::velkcom
