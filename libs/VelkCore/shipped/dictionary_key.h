#pragma once

#include <cstdint>

#include <QString>

#include "host/host.h"

namespace velk::core {

/// How a dictionary tells text keys apart.
enum class KeyCompare {
    binary = 0,  ///< by their UTF-16 code units
    text = 1,    ///< without regard to case
};

/// The comparable form of a host value: what a dictionary looks entries up by
/// and what decides whether two list items are equal. Integers, doubles and
/// truth values that are equal as numbers are one key, an object is the same
/// key only as itself, the empty value is a key of its own.
class DictionaryKey {
  public:
    /// The key of the empty value.
    DictionaryKey() = default;

    /// Reads the value, which is no script variable.
    DictionaryKey(mzComVariantC const& value, KeyCompare compare);

    std::uint32_t hash() const noexcept { return hash_; }

    bool equals(DictionaryKey const& other, KeyCompare compare) const noexcept;

  private:
    enum class Kind : std::uint8_t { empty, number, text, object };

    void setNumber(double number) noexcept;
    void setText(QString text, KeyCompare compare) noexcept;
    void setObject(mzComPtrT<mzIUnknown> const& object);

    QString text_;
    union {
        double number_ = 0;
        void const* object_;
    };
    std::uint32_t hash_ = 0;
    Kind kind_ = Kind::empty;
};

}  // namespace velk::core
