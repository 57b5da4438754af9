#include "com/error.h"
#include "com/registration/registry.h"
#include "com/registration/script.h"
#include "com/utf.h"

namespace velk::com {
namespace {

using Text = std::basic_string<OLECHAR>;

std::string shown(KeyPath const& key) {
    std::string root = "HKEY_CLASSES_ROOT";
    if (key.root == HKEY_CURRENT_USER) root = "HKEY_CURRENT_USER";
    if (key.root == HKEY_LOCAL_MACHINE) root = "HKEY_LOCAL_MACHINE";
    if (key.root == HKEY_USERS) root = "HKEY_USERS";
    if (key.root == HKEY_CURRENT_CONFIG) root = "HKEY_CURRENT_CONFIG";
    return key.names.empty() ? root : root + "\\" + toUtf8(key.names);
}

// HKEY_CLASSES_ROOT shows the user's classes over the machine's, and what is
// written through it lands where the key happens to stand already: a machine's
// registration beside a user's would be the user's.
KeyPath rootPath(RegistryScriptRoot const& root, bool perUser) {
    if (root.root != HKEY_CLASSES_ROOT) return {root.root, {}};
    return {perUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, OLESTR("Software\\Classes")};
}

KeyPath below(KeyPath const& parent, Text const& name) {
    return {parent.root, parent.names.empty() ? name : parent.names + OLECHAR{'\\'} + name};
}

void require(LSTATUS status, char const* action, KeyPath const& key) {
    if (status != ERROR_SUCCESS) throwIfError(status, action + shown(key));
}

// For steps whose purpose is met when the thing is not there.
void requireGone(LSTATUS status, char const* action, KeyPath const& key) {
    bool const absent = status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
    if (!absent) require(status, action, key);
}

class Installer {
  public:
    explicit Installer(Registry& registry) noexcept : registry_(registry) {}

    void root(RegistryScriptRoot const& root, KeyPath const& path) {
        // What stands below the machine's predefined keys is there; the user's
        // classes may not be yet.
        if (path.root == HKEY_CURRENT_USER && !path.names.empty())
            require(registry_.createKey(path), "cannot create ", path);
        content(root.values, root.keys, path);
    }

  private:
    void key(RegistryScriptKey const& key, KeyPath const& parent) {
        KeyPath const path = below(parent, key.name);
        if (key.rule == KeyRule::remove || key.rule == KeyRule::forceRemove) {
            requireGone(registry_.deleteTree(path), "cannot delete ", path);
        }
        if (key.rule == KeyRule::remove) return;
        require(registry_.createKey(path), "cannot create ", path);
        if (key.defaultValue) write(path, {}, *key.defaultValue);
        content(key.values, key.keys, path);
    }

    void content(std::vector<RegistryScriptValue> const& values,
                 std::vector<RegistryScriptKey> const& keys, KeyPath const& path) {
        for (auto const& value : values) write(path, value.name, value.data);
        for (auto const& child : keys) key(child, path);
    }

    void write(KeyPath const& path, Text const& name, RegistryScriptData const& data) {
        LSTATUS const status = registry_.setValue(path, name, data.type, data.bytes);
        if (name.empty()) {
            require(status, "cannot write the default value of ", path);
        } else {
            require(status, ("cannot write the value \"" + toUtf8(name) + "\" of ").c_str(), path);
        }
    }

    Registry& registry_;
};

class Remover {
  public:
    explicit Remover(Registry& registry) noexcept : registry_(registry) {}

    void root(RegistryScriptRoot const& root, KeyPath const& path) {
        content(root.values, root.keys, path);
    }

  private:
    void key(RegistryScriptKey const& key, KeyPath const& parent) {
        KeyPath const path = below(parent, key.name);
        if (key.rule == KeyRule::remove) return;
        if (key.rule == KeyRule::forceRemove) {
            requireGone(registry_.deleteTree(path), "cannot delete ", path);
            return;
        }
        content(key.values, key.keys, path);
        if (key.rule == KeyRule::normal) deleteWithoutSubkeys(path);
    }

    void content(std::vector<RegistryScriptValue> const& values,
                 std::vector<RegistryScriptKey> const& keys, KeyPath const& path) {
        for (auto const& value : values) {
            requireGone(registry_.deleteValue(path, value.name), "cannot delete a value of ", path);
        }
        for (auto const& child : keys) key(child, path);
    }

    void deleteWithoutSubkeys(KeyPath const& path) {
        bool occupied = false;
        LSTATUS const status = registry_.hasSubkeys(path, occupied);
        requireGone(status, "cannot read ", path);
        if (status != ERROR_SUCCESS || occupied) return;
        requireGone(registry_.deleteKey(path), "cannot delete ", path);
    }

    Registry& registry_;
};

template <typename Runner>
void run(RegistryScript const& script, Registry& registry, bool perUser) {
    Runner runner(registry);
    for (auto const& root : script) runner.root(root, rootPath(root, perUser));
}

}  // namespace

void installScript(RegistryScript const& script, Registry& registry, bool perUser) {
    run<Installer>(script, registry, perUser);
}

void removeScript(RegistryScript const& script, Registry& registry, bool perUser) {
    run<Remover>(script, registry, perUser);
}

}  // namespace velk::com
