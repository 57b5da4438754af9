#include "platform/storage/properties/value_reader.h"

#include <algorithm>
#include <optional>
#include <string>

#include <oleauto.h>

#include "platform/storage/properties/array_values.h"
#include "platform/storage/properties/value_type.h"
#include "platform/system/utf16.h"

namespace velk::platform::storage {
namespace {

std::u16string unitsOf(Bytes bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return text;
}

/// A copy that ends at the first zero.
TaskArray<char16_t> wideText(Bytes bytes) {
    auto made = taskArray<char16_t>(bytes.size() / sizeof(char16_t) + 1);
    std::memcpy(made.get(), bytes.data(), bytes.size() / sizeof(char16_t) * sizeof(char16_t));
    return made;
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// One of the ways in which programs have put texts into vectors.
struct Layout {
    bool textsArePadded = true;
    /// Values in a vector that hold nothing are taken for a sign that the texts
    /// before are laid out in another way.
    bool isCertain = false;
    /// A text whose last character is no zero is taken for a sign that it was
    /// read at the wrong place. Some programs leave rubbish behind the zero.
    bool textsEndInZero = true;
};

/// Reads one value or vector. What it fails at may be read in another way.
class Reading final : public ArrayElements {
  public:
    Reading(Bytes bytes, CodePage const& page, Layout layout)
        : from_(bytes), page_(page), layout_(layout) {}

    std::size_t end() const { return from_.end(); }

    /// Reads a text with its number. The caller frees it.
    BSTR bstr() override {
        std::size_t const start = from_.position();
        auto text = page_.toText(textOf(sizedBytes()));
        bool const endsAtItsZero = depth_ > 0 && !layout_.textsEndInZero;
        text.resize(endsAtItsZero ? std::min(text.find(u'\0'), text.size())
                                  : text.find_last_not_of(u'\0') + 1);
        BSTR const made = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        if (made == nullptr) throw std::bad_alloc();
        padText(start);
        return made;
    }

    /// Reads a type and its value.
    void typedValue(PROPVARIANT& value) override {
        std::size_t const start = from_.position();
        auto const type = from_.read<VARTYPE>();
        auto const padding = from_.read<WORD>();
        bool const isDoubtful = type == VT_EMPTY || padding != 0;
        require(!layout_.isCertain || depth_ == 0 || !isDoubtful, malformedSet);
        require(isValueType(type), HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
        if (isVector(type)) {
            vector(type, value);
        } else {
            alone(type, value);
        }
        Form const form = valueType(type).form;
        // Texts in a vector of values follow each other as texts in a vector do.
        bool const isText = form == Form::byteText || form == Form::bstr || form == Form::wideText;
        if (!isText) from_.skipPadding(start);
    }

  private:
    void alone(VARTYPE type, PROPVARIANT& value) {
        ValueType const known = valueType(type);
        switch (known.form) {
            case Form::fixed: {
                auto const bytes = from_.take(known.size);
                std::ranges::copy(bytes, fixedBytes(value, known).begin());
                break;
            }
            case Form::classId: {
                auto made = taskArray<CLSID>(1);
                made[0] = from_.read<CLSID>();
                value.puuid = made.release();
                break;
            }
            case Form::clipboard: {
                auto made = taskArray<CLIPDATA>(1);
                element(known.form, made.get());
                value.pclipdata = made.release();
                break;
            }
            case Form::array:
                value.parray = readArray(type, from_, *this);
                break;
            default:
                element(known.form, &value.pszVal);
        }
        value.vt = type;
    }

    void vector(VARTYPE type, PROPVARIANT& value) {
        ValueType const known = valueType(elementType(type));
        std::size_t const size = known.elementSize;
        auto const count = from_.read<ULONG>();
        // An element is at least a byte, and at least a size where it has one.
        std::size_t const least = known.form == Form::fixed ? known.size : sizeof(ULONG);
        require(count <= from_.left() / least, malformedSet);
        value.cac = {count, taskArray<CHAR>(count * size).release()};
        value.vt = type;
        ++depth_;
        require(depth_ <= deepestValue, malformedSet);
        if (known.form == Form::fixed) {
            std::ranges::copy(from_.take(count * size),
                              reinterpret_cast<std::byte*>(value.cac.pElems));
        } else {
            for (ULONG i = 0; i < count; ++i) element(known.form, value.cac.pElems + i * size);
        }
        --depth_;
    }

    /// What an element of a vector holds, and a value alone as well.
    void element(Form form, void* place) {
        std::size_t const start = from_.position();
        switch (form) {
            case Form::byteText: {
                auto const text = narrowText(sizedBytes(), page_);
                *static_cast<char**>(place) = taskText(std::string_view(text)).release();
                return padText(start);
            }
            case Form::bstr:
                *static_cast<BSTR*>(place) = bstr();
                return;
            case Form::wideText: {
                *static_cast<char16_t**>(place) = wideText(countedUnits()).release();
                return padText(start);
            }
            case Form::blob: {
                auto const bytes = from_.take(from_.read<ULONG>());
                *static_cast<BLOB*>(place) = {static_cast<ULONG>(bytes.size()),
                                              taskBytes(bytes).release()};
                return from_.skipPadding(start);
            }
            case Form::clipboard:
                clipboard(*static_cast<CLIPDATA*>(place));
                return from_.skipPadding(start);
            case Form::classId:
                *static_cast<CLSID*>(place) = from_.read<CLSID>();
                return;
            case Form::variant:
                return typedValue(*static_cast<PROPVARIANT*>(place));
            default:
                fail(HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
        }
    }

    void clipboard(CLIPDATA& data) {
        auto const size = from_.read<ULONG>();
        require(size >= sizeof data.ulClipFmt, malformedSet);
        data.ulClipFmt = from_.read<LONG>();
        data.pClipData = taskBytes(from_.take(size - sizeof data.ulClipFmt)).release();
        data.cbSize = size;
    }

    /// The bytes of a text behind their number. In a value alone the number may
    /// lead beyond the end; in a vector the text must have a zero, which tells
    /// a text that was read at the wrong place.
    Bytes sizedBytes() {
        return endingInZero(from_.read<ULONG>(), page_.isUtf16() ? sizeof(char16_t) : 1);
    }
    Bytes countedUnits() {
        return endingInZero(std::size_t{from_.read<ULONG>()} * sizeof(char16_t), sizeof(char16_t));
    }
    Bytes endingInZero(std::size_t size, std::size_t unit) {
        if (depth_ == 0) return from_.take(std::min(size, from_.left()));
        Bytes const text = from_.take(size);
        std::size_t const units = size / unit;
        bool isEnded = size == 0;
        for (std::size_t i = layout_.textsEndInZero && units != 0 ? units - 1 : 0; i < units; ++i) {
            isEnded = isEnded || std::ranges::all_of(text.subspan(i * unit, unit), isZero);
        }
        require(isEnded, malformedSet);
        return text;
    }
    static bool isZero(std::byte b) { return b == std::byte{}; }

    void padText(std::size_t start) {
        if (depth_ == 0 || layout_.textsArePadded) from_.skipPadding(start);
    }

    ByteReader from_;
    CodePage const& page_;
    Layout const layout_;
    std::size_t depth_ = 0;
};

struct ReadValue {
    HeldValue value;
    std::size_t size = 0;
};

ReadValue read(Bytes bytes, CodePage const& page, Layout layout) {
    ReadValue made;
    Reading reading(bytes, page, layout);
    reading.typedValue(made.value.get());
    made.size = reading.end();
    return made;
}

/// Nothing where the bytes are no such value.
std::optional<ReadValue> tryRead(Bytes bytes, CodePage const& page, Layout layout) {
    try {
        return read(bytes, page, layout);
    } catch (Failure const&) {
        return {};
    }
}

bool beginsVector(Bytes bytes) {
    return bytes.size() >= sizeof(VARTYPE) && isVector(ByteReader(bytes).read<VARTYPE>());
}

ReadValue readEitherWay(Bytes bytes, std::size_t own, CodePage const& page) {
    if (!beginsVector(bytes)) return read(bytes, page, {});
    Bytes const ownBytes = bytes.first(std::min(own, bytes.size()));
    if (auto made = tryRead(ownBytes, page, {true, true})) return std::move(*made);
    if (auto made = tryRead(ownBytes, page, {false, true})) return std::move(*made);
    if (auto made = tryRead(bytes, page, {})) return std::move(*made);
    if (auto made = tryRead(ownBytes, page, {true, true, false})) return std::move(*made);
    if (auto made = tryRead(ownBytes, page, {false, true, false})) return std::move(*made);
    return read(bytes, page, {true, false, false});
}

}  // namespace

HeldValue readValue(Bytes bytes, std::size_t own, CodePage const& page) {
    return readEitherWay(bytes, own, page).value;
}

std::size_t valueSize(Bytes bytes, std::size_t own, CodePage const& page) {
    return readEitherWay(bytes, own, page).size;
}

std::string narrowText(Bytes bytes, CodePage const& page) {
    if (page.isUtf16()) {
        auto const text = unitsOf(bytes);
        return toBytes(
            std::u16string_view(text).substr(0, std::min(text.find(u'\0'), text.size())));
    }
    auto const text = textOf(bytes);
    auto const toZero = text.substr(0, std::min(text.find('\0'), text.size()));
    // All pages but UTF-16 have ASCII in common.
    bool const isUtf8 = page.isUtf8() || isAscii(toZero);
    return isUtf8 ? std::string(toZero) : toBytes(page.toText(toZero));
}

}  // namespace velk::platform::storage
