#include "platform/storage/properties/value_writer.h"

#include <limits>

#include <oleauto.h>

#include "platform/storage/properties/array_values.h"
#include "platform/storage/properties/value_type.h"
#include "platform/system/utf16.h"

namespace velk::platform::storage {
namespace {

constexpr unsigned utf8Page = 65001;

ULONG checkedSize(std::size_t size) {
    require(size <= std::numeric_limits<ULONG>::max() / 2, STG_E_INVALIDPARAMETER);
    return static_cast<ULONG>(size);
}

/// UTF-8 in the page's bytes, with a zero.
std::string pageBytes(std::string_view text, CodePage const& page) {
    if (page.isUtf8()) return std::string(text) + '\0';
    auto const wide = toUtf16(text);
    // Bytes that are no UTF-8 have become lone surrogates that no text has.
    bool const isText = CodePage(utf8Page).toText(text) == wide;
    require(isText, noSuchCharacter);
    return pageText(wide, page);
}

class Writing final : public ArrayWriting {
  public:
    explicit Writing(CodePage const& page) : page_(page) {}

    void typedValue(PROPVARIANT const& value) override {
        require(isValueType(value.vt), HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
        require(depth_ != deepestValue, STG_E_INVALIDPARAMETER);
        ++depth_;
        to_.write(ULONG{value.vt});
        if (isVector(value.vt)) {
            vector(value);
        } else {
            alone(value);
        }
        to_.pad();
        --depth_;
    }

    void bstr(BSTR text) override {
        std::u16string_view const units(text != nullptr ? text : u"", SysStringLen(text));
        sizedText(pageText(units, page_));
    }

    std::vector<std::byte> take() { return to_.take(); }

  private:
    void alone(PROPVARIANT const& value) {
        ValueType const known = valueType(value.vt);
        switch (known.form) {
            case Form::fixed:
                return fixed(value, known);
            case Form::classId:
            case Form::clipboard:
                require(value.puuid != nullptr, STG_E_INVALIDPARAMETER);
                return element(known.form, value.puuid);
            case Form::array:
                return writeArray(value.vt, value.parray, to_, *this);
            default:
                return element(known.form, &value.pszVal);
        }
    }

    void fixed(PROPVARIANT const& value, ValueType const& known) {
        if (value.vt != VT_DECIMAL) return to_.write(fixedBytes(value, known));
        // The type of the value stands where a decimal keeps nothing.
        DECIMAL number = value.decVal;
        number.wReserved = 0;
        to_.write(number);
    }

    void vector(PROPVARIANT const& value) {
        ValueType const known = valueType(elementType(value.vt));
        auto const* const elements = value.cac.pElems;
        ULONG const count = value.cac.cElems;
        require(elements != nullptr || count == 0, STG_E_INVALIDPARAMETER);
        to_.write(count);
        if (known.form == Form::fixed) {
            to_.write(std::as_bytes(std::span(elements, count * known.elementSize)));
            return;
        }
        for (ULONG i = 0; i < count; ++i) element(known.form, elements + i * known.elementSize);
    }

    void element(Form form, void const* place) {
        switch (form) {
            case Form::byteText: {
                auto const* const text = *static_cast<char const* const*>(place);
                return sizedText(pageBytes(text != nullptr ? text : "", page_));
            }
            case Form::bstr:
                return bstr(*static_cast<BSTR const*>(place));
            case Form::wideText:
                return countedText(*static_cast<char16_t const* const*>(place));
            case Form::blob:
                return blob(*static_cast<BLOB const*>(place));
            case Form::clipboard:
                return clipboard(*static_cast<CLIPDATA const*>(place));
            case Form::classId:
                return to_.write(*static_cast<CLSID const*>(place));
            case Form::variant:
                return typedValue(*static_cast<PROPVARIANT const*>(place));
            default:
                fail(HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
        }
    }

    void sizedText(std::string const& withZero) {
        to_.write(checkedSize(withZero.size()));
        to_.write(std::string_view(withZero));
        to_.pad();
    }

    void countedText(char16_t const* text) {
        std::u16string_view const units = text != nullptr ? text : u"";
        to_.write(checkedSize(units.size() + 1));
        to_.write(std::as_bytes(std::span(units)));
        to_.write(u'\0');
        to_.pad();
    }

    void blob(BLOB const& value) {
        require(value.pBlobData != nullptr || value.cbSize == 0, STG_E_INVALIDPARAMETER);
        to_.write(value.cbSize);
        to_.write(std::as_bytes(std::span(value.pBlobData, value.cbSize)));
        to_.pad();
    }

    void clipboard(CLIPDATA const& data) {
        bool const isWhole = data.cbSize >= sizeof data.ulClipFmt &&
                             (data.pClipData != nullptr || CBPCLIPDATA(data) == 0);
        require(isWhole, STG_E_INVALIDPARAMETER);
        to_.write(data.cbSize);
        to_.write(data.ulClipFmt);
        to_.write(std::as_bytes(std::span(data.pClipData, CBPCLIPDATA(data))));
        to_.pad();
    }

    ByteWriter to_;
    CodePage const& page_;
    std::size_t depth_ = 0;
};

}  // namespace

std::vector<std::byte> writeValue(PROPVARIANT const& value, CodePage const& page) {
    Writing writing(page);
    writing.typedValue(value);
    return writing.take();
}

std::string pageText(std::u16string_view text, CodePage const& page) {
    std::u16string withZero(text);
    withZero += u'\0';
    auto bytes = page.toPageBytes(withZero);
    require(bytes.has_value(), noSuchCharacter);
    return std::move(*bytes);
}

}  // namespace velk::platform::storage
