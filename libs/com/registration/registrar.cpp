#include "com/registration/registrar.h"

#include "com/registration/registry.h"
#include "com/registration/registry_change.h"
#include "com/utf.h"

namespace velk::com {

void Registrar::addReplacement(TextView name, TextView value) {
    for (auto& known : replacements_) {
        if (equalIgnoringCase(known.name, name)) {
            known.value = value;
            return;
        }
    }
    replacements_.push_back({std::basic_string<OLECHAR>(name), std::basic_string<OLECHAR>(value)});
}

void Registrar::registerScript(TextView script) {
    run(script, true);
}

void Registrar::unregisterScript(TextView script) {
    run(script, false);
}

void Registrar::registerResource(HMODULE module, WORD id) {
    run(loadScript(module, id), true);
}

void Registrar::unregisterResource(HMODULE module, WORD id) {
    run(loadScript(module, id), false);
}

void Registrar::run(TextView text, bool install) {
    RegistryScript const script = parseScript(text, replacements_);
    auto const carryOut = install ? &installScript : &removeScript;
    if (registry_ != nullptr) {
        carryOut(script, *registry_, perUser_);
        return;
    }
    RegistryChange change(perUser_);
    SystemRegistry system;
    carryOut(script, system, perUser_);
    change.commit();
}

std::basic_string<OLECHAR> doubleQuotes(TextView text) {
    std::basic_string<OLECHAR> doubled;
    for (OLECHAR const unit : text) {
        doubled.push_back(unit);
        if (unit == '\'') doubled.push_back(unit);
    }
    return doubled;
}

}  // namespace velk::com
