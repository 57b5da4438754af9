#include "dictionary_key.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace velk::core {

namespace {

// 2^64 divided by the golden ratio, made odd: multiplying by it spreads
// neighbouring inputs over the whole word.
constexpr std::uint64_t spread = 0x9E3779B97F4A7C15u;

constexpr std::uint64_t mix(std::uint64_t hash, std::uint64_t value) noexcept {
    hash = (hash ^ value) * spread;
    return hash ^ (hash >> 29);
}

constexpr std::uint32_t narrow(std::uint64_t hash) noexcept {
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

char16_t foldCase(char16_t unit) noexcept {
    if (unit < 0x80) {
        return unit >= u'A' && unit <= u'Z' ? char16_t(unit + (u'a' - u'A')) : unit;
    }
    return QChar(unit).toCaseFolded().unicode();
}

std::uint64_t hashExact(QString const& text) noexcept {
    auto const* units = text.constData();
    std::size_t left = static_cast<std::size_t>(text.size());
    std::uint64_t hash = left;
    for (; left >= 4; left -= 4, units += 4) {
        std::uint64_t four = 0;
        std::memcpy(&four, units, sizeof four);
        hash = mix(hash, four);
    }
    if (left != 0) {
        std::uint64_t rest = 0;
        std::memcpy(&rest, units, left * sizeof(QChar));
        hash = mix(hash, rest);
    }
    return hash;
}

std::uint64_t hashFolded(QString const& text) noexcept {
    std::uint64_t hash = static_cast<std::uint64_t>(text.size());
    for (QChar const unit : text) {
        hash = mix(hash, foldCase(unit.unicode()));
    }
    return hash;
}

bool equalFolded(QString const& left, QString const& right) noexcept {
    if (left.size() != right.size()) {
        return false;
    }
    auto const* other = right.constData();
    for (QChar const unit : left) {
        if (foldCase(unit.unicode()) != foldCase((other++)->unicode())) {
            return false;
        }
    }
    return true;
}

}  // namespace

DictionaryKey::DictionaryKey(mzComVariantC const& value, KeyCompare compare) {
    switch (value.getType()) {
        case mzTypeInteger:
        case mzTypeDouble:
            setNumber(value.getDouble());
            break;
        case mzTypeString: {
            mzComStringC text;
            value.get(text);
            setText(text.toQString(), compare);
            break;
        }
        case mzTypeObject: {
            mzComPtrT<mzIUnknown> object;
            value.get(object);
            setObject(object);
            break;
        }
        default:
            break;
    }
}

void DictionaryKey::setNumber(double number) noexcept {
    kind_ = Kind::number;
    // The two zeros are equal, and every NaN stands for "no number": one bit
    // pattern each, so that equal keys have equal hashes.
    number_ = std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number + 0.0;
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number_, sizeof bits);
    hash_ = narrow(mix(1, bits));
}

void DictionaryKey::setText(QString text, KeyCompare compare) noexcept {
    kind_ = Kind::text;
    text_ = std::move(text);
    hash_ = narrow(compare == KeyCompare::text ? hashFolded(text_) : hashExact(text_));
}

void DictionaryKey::setObject(mzComPtrT<mzIUnknown> const& object) {
    kind_ = Kind::object;
    // An object may be held through any of its interfaces; its own mzIUnknown
    // is the same whichever way it is asked for.
    mzComPtrC identity(object.iface());
    if (object.isValid()) {
        mzComPtrC found;
        if (object->queryInterface(mzIUnknown::interfaceId(), found) == mzSuccess) {
            identity = found;
        }
    }
    object_ = identity.iface();
    hash_ = narrow(mix(2, reinterpret_cast<std::uintptr_t>(object_)));
}

bool DictionaryKey::equals(DictionaryKey const& other, KeyCompare compare) const noexcept {
    if (kind_ != other.kind_ || hash_ != other.hash_) {
        return false;
    }
    switch (kind_) {
        case Kind::empty:
            return true;
        case Kind::number:
            return number_ == other.number_ || (std::isnan(number_) && std::isnan(other.number_));
        case Kind::object:
            return object_ == other.object_;
        case Kind::text:
            return compare == KeyCompare::text ? equalFolded(text_, other.text_)
                                               : text_ == other.text_;
    }
    return false;
}

}  // namespace velk::core
