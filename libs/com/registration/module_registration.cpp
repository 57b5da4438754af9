#include <objbase.h>

#include "com/module.h"
#include "com/registration/registrar.h"

namespace velk::com {
namespace {

using Text = std::basic_string<OLECHAR>;

// A GUID as text has 38 characters and a NUL.
constexpr int guidCapacity = 39;

// In quotes, as the name of a key in a script.
Text quotedId(GUID const& id) {
    OLECHAR text[guidCapacity];
    StringFromGUID2(id, text, guidCapacity);
    return OLESTR("'") + Text(text) + OLESTR("'");
}

// The categories of a class as a script of their own: the class's key is the
// class's script's business.
Text categoryScript(ObjectMapEntry const& entry) {
    Text script =
        OLESTR("HKCR { NoRemove CLSID { NoRemove ") + quotedId(*entry.classId) + OLESTR(" { ");
    for (auto const* item = entry.categories; item->category != nullptr; ++item) {
        script +=
            item->required ? OLESTR("'Required Categories'") : OLESTR("'Implemented Categories'");
        script += OLESTR(" { ") + quotedId(*item->category) + OLESTR(" } ");
    }
    return script + OLESTR("} } }");
}

void updateCategories(ObjectMapEntry const& entry, bool install, bool perUser) {
    if (entry.categories == nullptr) return;
    Registrar registrar;
    registrar.setPerUser(perUser);
    if (install) {
        registrar.registerScript(categoryScript(entry));
    } else {
        registrar.unregisterScript(categoryScript(entry));
    }
}

}  // namespace

void DllModule::updateRegistry(WORD script, bool install, bool perUser) {
    HMODULE const module = moduleHandle();
    Registrar registrar;
    registrar.setPerUser(perUser);
    // Inside quotes of a script a quote has to be written twice.
    auto const path = doubleQuotes(modulePath(module));
    registrar.addReplacement(OLESTR("MODULE"), path);
    registrar.addReplacement(OLESTR("MODULE_RAW"), path);
    AddCommonRGSReplacements(registrar);
    if (install) {
        registrar.registerResource(module, script);
    } else {
        registrar.unregisterResource(module, script);
    }
}

void DllModule::updateClass(ObjectMapEntry const& entry, bool install, bool perUser) {
    if (!install) updateCategories(entry, install, perUser);
    if (entry.registryScript != 0) updateRegistry(entry.registryScript, install, perUser);
    if (install) updateCategories(entry, install, perUser);
}

}  // namespace velk::com
