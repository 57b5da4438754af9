#include "platform/storage/properties/property_storage.h"

#include <algorithm>
#include <limits>

#include "platform/storage/properties/value_reader.h"
#include "platform/storage/properties/value_writer.h"

namespace velk::platform::storage {
namespace {

constexpr unsigned unicodePage = 1200;
// This system's narrow encoding is UTF-8.
constexpr unsigned ansiPage = 65001;
// With its zero, as published for sets whose names may count case or not.
constexpr std::size_t longestName = 256;

constexpr bool isOrdinary(PROPID id) {
    return id >= PID_FIRST_USABLE && id < PID_MIN_READONLY;
}

std::u16string_view checkedName(LPCOLESTR name) {
    require(name != nullptr, STG_E_INVALIDPARAMETER);
    std::u16string_view const text = name;
    require(!text.empty() && text.size() < longestName, STG_E_INVALIDPARAMETER);
    return text;
}

/// What an enumeration tells of a property.
struct PropertyStatus {
    PROPID id = 0;
    VARTYPE type = VT_EMPTY;
    std::optional<std::u16string> name;

    STATPROPSTG give() const {
        STATPROPSTG given{};
        given.propid = id;
        given.vt = type;
        if (name) given.lpwstrName = taskText(std::u16string_view(*name)).release();
        return given;
    }
    static void takeBack(STATPROPSTG& given) noexcept { CoTaskMemFree(given.lpwstrName); }
};
using PropertyEnumerator =
    StatusEnumerator<IEnumSTATPROPSTG, IID_IEnumSTATPROPSTG, STATPROPSTG, PropertyStatus>;

PROPVARIANT numberValue(VARTYPE type, ULONG number) {
    PROPVARIANT value{};
    value.vt = type;
    value.ulVal = number;
    return value;
}

}  // namespace

template <typename Body>
HRESULT PropertyStorage::use(Body body) noexcept {
    return answer([&] {
        std::lock_guard const turn(lock_);
        body();
    });
}

template <typename Body>
HRESULT PropertyStorage::change(Body body) noexcept {
    return use([&] {
        require((mode_ & (STGM_WRITE | STGM_READWRITE)) != 0, STG_E_ACCESSDENIED);
        body();
        isChanged_ = true;
    });
}

PropertyStorage::PropertyStorage(Stream stream, REFFMTID formatId, DWORD mode,
                                 std::shared_ptr<DirectCommit> commit)
    : stream_(std::move(stream)), formatId_(formatId), mode_(mode), commit_(std::move(commit)) {
    load();
}

PropertyStorage::PropertyStorage(Stream stream, REFFMTID formatId, DWORD mode,
                                 std::shared_ptr<DirectCommit> commit, NewSet const& set)
    : stream_(std::move(stream)), formatId_(formatId), mode_(mode), commit_(std::move(commit)) {
    set_ = readSets(*stream_.get());
    unsigned const page = (set.flags & PROPSETFLAG_ANSI) != 0 ? ansiPage : unicodePage;
    // The user-defined properties stand behind the document summary information.
    bool const isSecond = formatId == FMTID_UserDefinedProperties;
    if (isSecond && set_.isEmpty()) set_.put(Section(FMTID_DocSummaryInformation, page));
    section_ = &set_.put(Section(formatId, page));
    if ((set.flags & PROPSETFLAG_CASE_SENSITIVE) != 0) {
        auto const behavior = numberValue(VT_UI4, PROPSET_BEHAVIOR_CASE_SENSITIVE);
        section_->put(PID_BEHAVIOR, writeValue(behavior, section_->page()));
    }
    if (!isSecond) set_.setClassId(set.classId);
    readNames();
    writeSets(*stream_.get(), set_);
}

PropertyStorage::~PropertyStorage() {
    // There is nobody left to tell of a failure; the stream keeps what it had.
    bool const isDirect = (mode_ & STGM_TRANSACTED) == 0;
    if (isChanged_ && isDirect && !isRefused_) static_cast<void>(Commit(STGC_DEFAULT));
}

void PropertyStorage::load() {
    set_ = readSets(*stream_.get());
    section_ = &set_.at(formatId_);
    readNames();
    isChanged_ = false;
}

void PropertyStorage::readNames() {
    auto const* const kept = section_->find(PID_DICTIONARY);
    names_ = kept == nullptr ? Dictionary(section_->countsCase())
                             : Dictionary(kept->bytes, section_->page(), section_->countsCase());
    namesAreChanged_ = false;
}

void PropertyStorage::keepNames() {
    if (!namesAreChanged_) return;
    if (names_.isEmpty()) {
        section_->remove(PID_DICTIONARY);
    } else {
        section_->put(PID_DICTIONARY, names_.write(section_->page()));
    }
    namesAreChanged_ = false;
}

std::optional<PROPID> PropertyStorage::idOf(PROPSPEC const& specifier) const {
    if (specifier.ulKind == PRSPEC_PROPID) return specifier.propid;
    require(specifier.ulKind == PRSPEC_LPWSTR && specifier.lpwstr != nullptr,
            STG_E_INVALIDPARAMETER);
    return names_.idOf(specifier.lpwstr);
}

HeldValue PropertyStorage::value(PROPID id) const {
    auto const* const kept = id == PID_DICTIONARY ? nullptr : section_->find(id);
    if (kept == nullptr) return {};
    return readValue(kept->bytes, kept->own, section_->page());
}

HRESULT PropertyStorage::ReadMultiple(ULONG count, PROPSPEC const specifiers[],
                                      PROPVARIANT values[]) noexcept {
    if (count != 0 && (specifiers == nullptr || values == nullptr)) return STG_E_INVALIDPARAMETER;
    std::fill_n(values, count, PROPVARIANT{});
    bool isAnyThere = count == 0;
    HRESULT const code = use([&] {
        for (ULONG i = 0; i < count; ++i) {
            auto const id = idOf(specifiers[i]);
            if (!id || *id == PID_DICTIONARY || section_->find(*id) == nullptr) continue;
            values[i] = value(*id).release();
            isAnyThere = true;
        }
    });
    if (FAILED(code)) {
        for (ULONG i = 0; i < count; ++i) PropVariantClear(&values[i]);
        return code;
    }
    return isAnyThere ? S_OK : S_FALSE;
}

PROPID PropertyStorage::firstFreeId(PROPID least) const {
    least = std::max(least, PID_FIRST_USABLE);
    PROPID highest = names_.highestId();
    for (auto const& property : section_->properties()) {
        if (isOrdinary(property.id)) highest = std::max(highest, property.id);
    }
    return std::max(least, highest + 1);
}

void PropertyStorage::writeCodePage(PROPVARIANT const& value) {
    // What is there already is kept in the page that it was written in.
    bool const isEmpty =
        names_.isEmpty() &&
        std::ranges::none_of(section_->properties(),
                             [](KeptProperty const& property) { return isOrdinary(property.id); });
    require(isEmpty && value.vt == VT_I2, STG_E_INVALIDPARAMETER);
    section_->put(PID_CODEPAGE, writeValue(value, section_->page()));
}

HRESULT PropertyStorage::WriteMultiple(ULONG count, PROPSPEC const specifiers[],
                                       PROPVARIANT const values[], PROPID firstNamed) noexcept {
    if (count != 0 && (specifiers == nullptr || values == nullptr)) return STG_E_INVALIDPARAMETER;
    return change([&] {
        if (count == 1 && idOf(specifiers[0]) == PID_CODEPAGE) return writeCodePage(values[0]);
        // All that can fail comes before the first change.
        struct Written {
            PROPID id;
            std::vector<std::byte> bytes;
        };
        std::vector<Written> written;
        Dictionary added(section_->countsCase());
        for (ULONG i = 0; i < count; ++i) {
            auto id = idOf(specifiers[i]);
            if (!id) id = added.idOf(specifiers[i].lpwstr);
            if (!id) {
                auto const name = checkedName(specifiers[i].lpwstr);
                static_cast<void>(pageText(name, section_->page()));
                id = added.isEmpty() ? firstFreeId(firstNamed) : added.highestId() + 1;
                added.put(*id, name);
            }
            require(isOrdinary(*id), STG_E_INVALIDPARAMETER);
            written.push_back({*id, writeValue(values[i], section_->page())});
        }
        for (auto& [id, bytes] : written) {
            if (auto const* const name = added.nameOf(id)) {
                names_.put(id, *name);
                namesAreChanged_ = true;
            }
            section_->put(id, std::move(bytes));
        }
    });
}

HRESULT PropertyStorage::DeleteMultiple(ULONG count, PROPSPEC const specifiers[]) noexcept {
    if (count != 0 && specifiers == nullptr) return STG_E_INVALIDPARAMETER;
    return change([&] {
        std::vector<PROPID> ids;
        for (ULONG i = 0; i < count; ++i) {
            auto const id = idOf(specifiers[i]);
            require(!id || isOrdinary(*id), STG_E_INVALIDPARAMETER);
            if (id) ids.push_back(*id);
        }
        for (PROPID const id : ids) {
            section_->remove(id);
            removeName(id);
        }
    });
}

void PropertyStorage::removeName(PROPID id) {
    if (names_.nameOf(id) == nullptr) return;
    names_.remove(id);
    namesAreChanged_ = true;
}

HRESULT PropertyStorage::ReadPropertyNames(ULONG count, PROPID const ids[],
                                           LPOLESTR names[]) noexcept {
    if (count != 0 && (ids == nullptr || names == nullptr)) return STG_E_INVALIDPARAMETER;
    std::fill_n(names, count, nullptr);
    bool isAnyThere = count == 0;
    HRESULT const code = use([&] {
        for (ULONG i = 0; i < count; ++i) {
            auto const* const name = names_.nameOf(ids[i]);
            if (name == nullptr) continue;
            names[i] = taskText(std::u16string_view(*name)).release();
            isAnyThere = true;
        }
    });
    if (FAILED(code)) {
        for (ULONG i = 0; i < count; ++i) CoTaskMemFree(std::exchange(names[i], nullptr));
        return code;
    }
    return isAnyThere ? S_OK : S_FALSE;
}

HRESULT PropertyStorage::WritePropertyNames(ULONG count, PROPID const ids[],
                                            LPOLESTR const names[]) noexcept {
    if (count != 0 && (ids == nullptr || names == nullptr)) return STG_E_INVALIDPARAMETER;
    return change([&] {
        for (ULONG i = 0; i < count; ++i) {
            auto const name = checkedName(names[i]);
            auto const owner = names_.idOf(name);
            require(isOrdinary(ids[i]) && (!owner || *owner == ids[i]), STG_E_INVALIDPARAMETER);
            static_cast<void>(pageText(name, section_->page()));
        }
        for (ULONG i = 0; i < count; ++i) names_.put(ids[i], names[i]);
        namesAreChanged_ = namesAreChanged_ || count != 0;
    });
}

HRESULT PropertyStorage::DeletePropertyNames(ULONG count, PROPID const ids[]) noexcept {
    if (count != 0 && ids == nullptr) return STG_E_INVALIDPARAMETER;
    return change([&] {
        for (ULONG i = 0; i < count; ++i) removeName(ids[i]);
    });
}

void PropertyStorage::commit(DWORD flags) {
    require((mode_ & (STGM_WRITE | STGM_READWRITE)) != 0, STG_E_ACCESSDENIED);
    if (isChanged_) {
        keepNames();
        wholly(commit_.get(), [&] { writeSets(*stream_.get(), set_); });
        isChanged_ = false;
    }
    check(stream_->Commit(flags));
    if (commit_) check(commit_->commit());
}

HRESULT PropertyStorage::Commit(DWORD flags) noexcept {
    HRESULT const code = use([&] { commit(flags); });
    isRefused_ = FAILED(code);
    return code;
}

HRESULT PropertyStorage::Revert() noexcept {
    return use([&] {
        if (isChanged_) load();
    });
}

HRESULT PropertyStorage::Enum(IEnumSTATPROPSTG** properties) noexcept {
    if (properties == nullptr) return STG_E_INVALIDPOINTER;
    *properties = nullptr;
    return use([&] {
        std::vector<PropertyStatus> all;
        for (auto const& property : section_->properties()) {
            auto const type = property.type();
            bool const isShown =
                isOrdinary(property.id) && type && section_->find(property.id) == &property;
            if (!isShown) continue;
            auto const* const name = names_.nameOf(property.id);
            all.push_back({property.id, *type, name ? std::optional(*name) : std::nullopt});
        }
        *properties = new PropertyEnumerator(std::move(all));
    });
}

HRESULT PropertyStorage::SetTimes(FILETIME const*, FILETIME const*, FILETIME const*) noexcept {
    return E_NOTIMPL;
}

HRESULT PropertyStorage::SetClass(REFCLSID classId) noexcept {
    return change([&] { set_.setClassId(classId); });
}

HRESULT PropertyStorage::Stat(STATPROPSETSTG* status) noexcept {
    if (status == nullptr) return STG_E_INVALIDPOINTER;
    return use([&] {
        *status = {};
        status->fmtid = formatId_;
        status->clsid = set_.classId();
        status->grfFlags = (section_->page().isUtf16() ? 0 : PROPSETFLAG_ANSI) |
                           (section_->countsCase() ? PROPSETFLAG_CASE_SENSITIVE : 0);
        status->dwOSVersion = set_.system();
    });
}

}  // namespace velk::platform::storage
