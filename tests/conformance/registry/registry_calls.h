/// Calls of the registry as words, and their answers.
#pragma once

#include <map>
#include <string>
#include <utility>

#include <windows.h>

#include <unknwn.h>

namespace velk::test {

using Text = std::basic_string<OLECHAR>;

/// From UTF-8, and to it.
Text wide(std::string const& text);
std::string narrow(Text const& text);

/// A short word for a status; "ok" for success, a number for a rare one.
std::string statusWord(LSTATUS status);

/// An open key, closed with this.
class Key {
  public:
    Key() = default;
    Key(Key&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
    Key& operator=(Key&& other) noexcept {
        std::swap(key_, other.key_);
        return *this;
    }
    ~Key() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    operator HKEY() const { return key_; }
    HKEY* target() { return &key_; }

  private:
    HKEY key_ = nullptr;
};

/// Makes calls, and keeps the keys that they open. In the words, a key is its
/// root and a path: C for HKEY_CLASSES_ROOT, U for the user's, M for the machine's,
/// S for all users', G for the current configuration, or a key that stands open;
/// then names, with / between them and \ for a slash in one. `x{9}` in a word is
/// nine times x.
///
///   make KEY [CLASS]         new, or old
///   deep KEY COUNT           makes so many keys, each below the one before
///   open KEY [RIGHT] [AS]    RIGHT: read, write, all, or most
///   close KEY
///   put KEY NAME VALUE       a value; NAME is - for the default one
///   get KEY NAME             VALUE: a text, or TYPE=BYTES in hexadecimal
///   text KEY NAME            the text by RegGetValueW
///   drop KEY NAME            deletes a value
///   delete KEY, tree KEY     RegDeleteKeyW, RegDeleteTreeW (of the key itself:
///                            what is below it)
///   list KEY                 names of keys | names of values
///   class KEY                the key's class
class RegistryCalls {
  public:
    std::string answer(std::string const& call);
    void closeAll() { open_.clear(); }

  private:
    struct Target;
    Target target(std::string const& word) const;
    std::string open(Target const& key, std::string const& right, std::string const& name);

    std::map<std::string, Key> open_;
};

}  // namespace velk::test
