#pragma once

#include <QVariant>
#include <new>
#include <type_traits>

#include "host/codes.h"
#include "host/com_ptr.h"
#include "host/com_string.h"
#include "host/export.h"

class mzIDispatchC;
class mzISymbolRefC;

/// A host value: empty, integer, floating point, text or object reference.
///
/// A truth value is an integer: -1 for true, 0 for false. A script variable is
/// an object reference to its `mzScriptSymbolRefI`. Numbers never touch the
/// heap. Different variants may be used on different threads.
class VELKCORE_API mzComVariantC {
  public:
    mzComVariantC() noexcept {}
    mzComVariantC(int value) noexcept : type_(mzTypeInteger) { content_.integer = value; }
    mzComVariantC(long value) noexcept { set(value); }
    mzComVariantC(bool value) noexcept : mzComVariantC(value ? -1 : 0) {}
    mzComVariantC(double value) noexcept : type_(mzTypeDouble) { content_.number = value; }
    mzComVariantC(char const* text) : mzComVariantC(mzComStringC(text)) {}
    mzComVariantC(mzComStringC text) noexcept : type_(mzTypeString) {
        new (&content_.text) mzComStringC(std::move(text));
    }
    /// No pointer becomes a truth value by accident.
    template <class T>
    requires(!std::is_convertible_v<T*, char const*>) mzComVariantC(T* pointer)
    = delete;
    mzComVariantC(mzComVariantC const& other) { copyFrom(other); }
    mzComVariantC(mzComVariantC&& other) noexcept { takeFrom(other); }
    ~mzComVariantC() { clear(); }

    mzComVariantC& operator=(mzComVariantC const& other) {
        if (this != &other) *this = mzComVariantC(other);
        return *this;
    }
    mzComVariantC& operator=(mzComVariantC&& other) noexcept {
        if (this != &other) {
            // The old content goes last: giving up an object can run any code.
            mzComVariantC old(std::move(*this));
            takeFrom(other);
        }
        return *this;
    }

    /// Makes the variant empty.
    void clear() noexcept {
        if (type_ > mzTypeDouble) {
            releaseContent();
        } else {
            type_ = mzTypeEmpty;
        }
    }

    /// One of the type codes `mzTypeEmpty` to `mzTypeObject`.
    int getType() const noexcept { return type_; }

    void set(int value) noexcept {
        clear();
        content_.integer = value;
        type_ = mzTypeInteger;
    }
    /// A value outside the 32-bit range becomes floating point.
    void set(long value) noexcept;
    void set(double value) noexcept {
        clear();
        content_.number = value;
        type_ = mzTypeDouble;
    }
    void set(bool value) noexcept { set(value ? -1 : 0); }
    void set(mzComStringC const& text) { *this = mzComVariantC(text); }
    void set(char const* text) { *this = mzComVariantC(text); }
    /// NUL-terminated UTF-16; null gives the empty text.
    void set(unsigned short const* text) { *this = mzComVariantC(mzComStringC(text)); }
    void set(OLECHAR const* text) { *this = mzComVariantC(mzComStringC(text)); }
    void set(QString const& text) { *this = mzComVariantC(mzComStringC(text)); }
    /// Truth values, numbers and what Qt can write as text; integers outside
    /// the 32-bit range become floating point, everything else empty.
    void set(QVariant const& value);
    void set(mzComVariantC const& value) { *this = value; }
    template <class T>
    requires(!std::is_convertible_v<T*, char const*> &&
             !std::is_convertible_v<T*, unsigned short const*> &&
             !std::is_convertible_v<T*, OLECHAR const*>) void set(T* pointer) = delete;

    /// Sets an object reference; an empty pointer gives an empty reference.
    unsigned set(mzComPtrT<mzIUnknown> const& object) { return intSet(object); }
    template <class T>
    unsigned set(mzComPtrT<T> const& object) {
        return intSet(mzComPtrT<mzIUnknown>(object.iface()));
    }
    /// Reads the object with a new reference. `mzFailure`, and `object` empty,
    /// when the variant holds none.
    unsigned get(mzComPtrT<mzIUnknown>& object) const { return intGet(object); }
    /// The same, looking through a script variable.
    unsigned getExt(mzComPtrT<mzIUnknown>& object) const { return intGetExt(object); }

    /// Whether the held object supports `mzIDispatch`.
    bool isIDispatch() const;
    /// A client over the held object, unbound when there is no dispatch object.
    mzIDispatchC toDispatch() const;

    /// The integer; a floating point value as `getExt(int&)` reads it; else 0.
    int getInt() const noexcept { return type_ == mzTypeInteger ? content_.integer : readInt(); }
    /// The number; 0 when the variant holds no number.
    double getDouble() const noexcept {
        if (type_ == mzTypeDouble) return content_.number;
        return type_ == mzTypeInteger ? content_.integer : 0.0;
    }
    /// The text; a value that is no text as `getExt(mzComStringC&)` reads it.
    unsigned get(mzComStringC& text) const { return getExt(text); }

    /// Converting reads. They look through a script variable; empty reads as
    /// false, 0 and the empty text; text is read as a number in the C locale,
    /// blanks around it ignored, or as "true" and "false" in any case. A number
    /// is rounded to the nearest integer, halves to the even one. `mzFailure`,
    /// and the target unchanged, when the value cannot be read so.
    unsigned getExt(bool& value) const;
    unsigned getExt(double& value) const;
    unsigned getExt(int& value) const;
    unsigned getExt(mzComStringC& value) const;

    /// Whether the variant stands for a script variable.
    bool isVariable() const;
    /// The value that the variable holds, which is never a variable itself: what
    /// is behind one is looked through. The variant itself without a variable;
    /// empty for variables that only lead to each other.
    mzComVariantC skipVariable() const;
    /// A reference to a new script variable that starts with `value`; to the
    /// same variable when `value` already stands for one.
    static mzISymbolRefC createSymbolRef(mzComVariantC const& value);

  private:
    union Content {
        Content() noexcept {}
        ~Content() {}
        int integer;
        double number;
        mzComStringC text;
        mzIUnknown* object;
    };

    unsigned intSet(mzComPtrT<mzIUnknown> const& object);
    unsigned intGet(mzComPtrT<mzIUnknown>& object) const;
    unsigned intGetExt(mzComPtrT<mzIUnknown>& object) const;

    inline void copyFrom(mzComVariantC const& other);
    inline void takeFrom(mzComVariantC& other) noexcept;
    void releaseContent() noexcept;
    int readInt() const noexcept;

    int type_ = mzTypeEmpty;
    Content content_;
};

inline void mzComVariantC::copyFrom(mzComVariantC const& other) {
    switch (other.type_) {
        case mzTypeInteger:
            content_.integer = other.content_.integer;
            break;
        case mzTypeDouble:
            content_.number = other.content_.number;
            break;
        case mzTypeString:
            new (&content_.text) mzComStringC(other.content_.text);
            break;
        case mzTypeObject:
            content_.object = other.content_.object;
            if (content_.object) content_.object->addRef();
            break;
        default:
            break;
    }
    type_ = other.type_;
}

inline void mzComVariantC::takeFrom(mzComVariantC& other) noexcept {
    switch (other.type_) {
        case mzTypeInteger:
            content_.integer = other.content_.integer;
            break;
        case mzTypeDouble:
            content_.number = other.content_.number;
            break;
        case mzTypeString:
            new (&content_.text) mzComStringC(std::move(other.content_.text));
            other.content_.text.~mzComStringC();
            break;
        case mzTypeObject:
            content_.object = other.content_.object;
            break;
        default:
            break;
    }
    type_ = other.type_;
    other.type_ = mzTypeEmpty;
}
