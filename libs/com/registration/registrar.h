/// Registers what registry scripts describe.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "com/owners.h"
#include "com/registration/script.h"

namespace velk::com {

/// Carries registry scripts out, or takes back what they wrote.
///
/// A script is read whole before anything is written, so an error in its text
/// changes nothing. Errors are Error: HRESULT_FROM_WIN32(ERROR_INVALID_DATA)
/// with line, column and what was expected for a mistake in the text; the
/// system's code with the key's path for a refused operation, after which the
/// entries before it stay unless the system can drop them (RegistryChange).
/// Not thread-safe. script.h has the syntax.
class Registrar {
  public:
    /// Works on the system's registry.
    Registrar() noexcept = default;
    /// Works on `registry`, which must outlive the registrar.
    explicit Registrar(Registry& registry) noexcept : registry_(&registry) {}

    /// Defines %`name`%, without regard to case; a later value for the same
    /// name replaces the former.
    void addReplacement(TextView name, TextView value);

    /// What scripts place under HKEY_CLASSES_ROOT goes under Software\Classes of
    /// HKEY_CURRENT_USER with true, else of HKEY_LOCAL_MACHINE.
    void setPerUser(bool perUser) noexcept { perUser_ = perUser; }

    void registerScript(TextView script);
    void unregisterScript(TextView script);

    /// The same with the script in resource `id` of type "REGISTRY" of
    /// `module`: UTF-8, or UTF-16 that begins with a byte-order mark.
    void registerResource(HMODULE module, WORD id);
    void unregisterResource(HMODULE module, WORD id);

  private:
    void run(TextView script, bool install);

    std::vector<Replacement> replacements_;
    Registry* registry_ = nullptr;
    bool perUser_ = false;
};

/// `text` with every single quote doubled, to stand between quotes.
std::basic_string<OLECHAR> doubleQuotes(TextView text);

}  // namespace velk::com
