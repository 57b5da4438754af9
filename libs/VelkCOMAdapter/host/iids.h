#pragma once

#include <string>
#include <string_view>

/// Identifier of a host interface or of a creatable class: a short 8-bit text.
///
/// Build one once, as a function-local static, and compare it often: the
/// comparison looks at a hash before it looks at the text. Reading from many
/// threads is safe, `set` is not safe beside other uses of the same object.
class mzIIDS {
  public:
    mzIIDS() = default;
    /// `text` is NUL-terminated; null counts as the empty text.
    explicit mzIIDS(char const* text) { set(text); }

    /// Replaces the text; null counts as the empty text.
    void set(char const* text) {
        text_ = text ? text : "";
        hash_ = std::hash<std::string_view>{}(text_);
    }

    /// Whether both name the same thing; case matters.
    bool equal(mzIIDS const& other) const { return hash_ == other.hash_ && text_ == other.text_; }

    /// The text, NUL-terminated, valid as long as this object is not changed.
    char const* text() const { return text_.c_str(); }

  private:
    std::string text_;
    std::size_t hash_ = std::hash<std::string_view>{}({});
};

/// An identifier that is never destroyed: objects that go late, when a module
/// is torn down, still ask one another for interfaces. Use it as a
/// function-local static.
class mzPermanentIidC {
  public:
    explicit mzPermanentIidC(char const* text) : id_(text) {}
    ~mzPermanentIidC() {}
    mzPermanentIidC(mzPermanentIidC const&) = delete;
    mzPermanentIidC& operator=(mzPermanentIidC const&) = delete;

    mzIIDS const& get() const { return id_; }

  private:
    union {
        mzIIDS id_;
    };
};
