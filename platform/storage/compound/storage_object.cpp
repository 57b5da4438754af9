#include "platform/storage/compound/storage_object.h"

#include <algorithm>

#include "platform/storage/compound/element_status.h"
#include "platform/storage/compound/stream_object.h"

namespace velk::platform::storage {
namespace {

std::u16string_view checkedName(OLECHAR const* name) {
    require(name != nullptr, STG_E_INVALIDNAME);
    std::u16string_view const text = name;
    bool const isUsable = !text.empty() && text.size() <= longestName &&
                          text.find_first_of(u"/\\:!") == std::u16string_view::npos;
    require(isUsable, STG_E_INVALIDNAME);
    return text;
}

template <typename Interface>
void clearTarget(Interface** target) {
    require(target != nullptr, STG_E_INVALIDPOINTER);
    *target = nullptr;
}

/// Commits the file when a property set in it is committed.
class FileCommit final : public DirectCommit {
  public:
    explicit FileCommit(std::shared_ptr<CompoundFile> file) : file_(std::move(file)) {}

    HRESULT commit() noexcept override {
        return answer([&] {
            std::lock_guard const turn(file_->lock());
            require(file_->isOpen(), STG_E_REVERTED);
            file_->commit();
        });
    }
    void refuse(HRESULT failure) noexcept override {
        std::lock_guard const turn(file_->lock());
        file_->refuseCommit(failure);
    }

  private:
    std::shared_ptr<CompoundFile> file_;
};

}  // namespace

StorageObject::StorageObject(std::shared_ptr<CompoundFile> file, DWORD mode, std::u16string path)
    : file_(std::move(file)),
      element_(std::make_shared<OpenElement>(OpenElement{rootEntry, mode})),
      path_(std::move(path)) {}

StorageObject::StorageObject(std::shared_ptr<CompoundFile> file,
                             std::shared_ptr<OpenElement> element)
    : file_(std::move(file)), element_(std::move(element)) {}

StorageObject::~StorageObject() {
    if (!isRoot()) return;
    bool const isDirect = !isTransacted(element_->mode);
    // There is nobody left to tell of a failure; the file keeps its former state.
    static_cast<void>(answer([&] {
        std::lock_guard const turn(file_->lock());
        if (isDirect) file_->commit();
    }));
    std::lock_guard const turn(file_->lock());
    file_->close();
}

HRESULT StorageObject::QueryInterface(REFIID riid, void** object) noexcept {
    if (object == nullptr || riid != IID_IPropertySetStorage) {
        return SharedObject::QueryInterface(riid, object);
    }
    *object = nullptr;
    return answer([&] {
        std::lock_guard const turn(file_->lock());
        if (!propertySets_) {
            auto commit = file_->isDirect() ? std::make_shared<FileCommit>(file_) : nullptr;
            propertySets_ = std::make_unique<PropertySets>(*this, std::move(commit));
        }
        *object = static_cast<IPropertySetStorage*>(propertySets_.get());
        AddRef();
    });
}

EntryId StorageObject::element(OLECHAR const* name) {
    require(name != nullptr, STG_E_INVALIDNAME);
    EntryId const found = file_->directory().find(element_->entry, name);
    require(found != noEntry, STG_E_FILENOTFOUND);
    return found;
}

EntryId StorageObject::elementOfType(OLECHAR const* name, EntryType type) {
    EntryId const found = element(name);
    require(file_->directory().at(found).type == type, STG_E_FILENOTFOUND);
    return found;
}

EntryId StorageObject::create(OLECHAR const* name, DWORD mode, EntryType type) {
    auto const text = checkedName(name);
    checkElementMode(mode, element_->mode, true);
    EntryId const former = file_->directory().find(element_->entry, text);
    if (former != noEntry) {
        // A stream never takes the place of a storage with all that is in it.
        bool const isOfType = file_->directory().at(former).type == type;
        require((mode & STGM_CREATE) != 0 && isOfType, STG_E_FILEALREADYEXISTS);
        file_->destroy(element_->entry, former);
    }
    EntryId const made = file_->directory().add(element_->entry, text, type);
    if (type == EntryType::storage) {
        Entry& entry = file_->directory().change(made);
        entry.created = entry.modified = presentFileTime();
    }
    return made;
}

HRESULT StorageObject::CreateStream(OLECHAR const* name, DWORD mode, DWORD reserved1,
                                    DWORD reserved2, IStream** stream) noexcept {
    return use([&] {
        clearTarget(stream);
        require(reserved1 == 0 && reserved2 == 0, STG_E_INVALIDPARAMETER);
        file_->change([&] {
            EntryId const made = create(name, mode, EntryType::stream);
            *stream = new StreamObject(file_, file_->open(made, mode));
        });
    });
}

HRESULT StorageObject::OpenStream(OLECHAR const* name, void* reserved1, DWORD mode, DWORD reserved2,
                                  IStream** stream) noexcept {
    return use([&] {
        clearTarget(stream);
        require(reserved1 == nullptr && reserved2 == 0, STG_E_INVALIDPARAMETER);
        checkElementMode(mode, element_->mode, false);
        EntryId const found = elementOfType(name, EntryType::stream);
        file_->checkSize(found);
        *stream = new StreamObject(file_, file_->open(found, mode));
    });
}

HRESULT StorageObject::CreateStorage(OLECHAR const* name, DWORD mode, DWORD reserved1,
                                     DWORD reserved2, IStorage** storage) noexcept {
    return use([&] {
        clearTarget(storage);
        require(reserved1 == 0 && reserved2 == 0, STG_E_INVALIDPARAMETER);
        file_->change([&] {
            EntryId const made = create(name, mode, EntryType::storage);
            *storage = new StorageObject(file_, file_->open(made, mode));
        });
    });
}

HRESULT StorageObject::OpenStorage(OLECHAR const* name, IStorage* priority, DWORD mode, SNB exclude,
                                   DWORD reserved, IStorage** storage) noexcept {
    return use([&] {
        clearTarget(storage);
        require(priority == nullptr && exclude == nullptr && reserved == 0, STG_E_INVALIDPARAMETER);
        checkElementMode(mode, element_->mode, false);
        EntryId const found = elementOfType(name, EntryType::storage);
        *storage = new StorageObject(file_, file_->open(found, mode));
    });
}

HRESULT StorageObject::Commit(DWORD) noexcept {
    return use([&] {
        if (isRoot()) file_->commit();
    });
}

HRESULT StorageObject::Revert() noexcept {
    return use([&] {
        // In a direct mode there is nothing to go back to.
        if (isRoot() && isTransacted(element_->mode)) file_->revert();
    });
}

HRESULT StorageObject::EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                    IEnumSTATSTG** elements) noexcept {
    return use([&] {
        clearTarget(elements);
        require(reserved1 == 0 && reserved2 == nullptr && reserved3 == 0, STG_E_INVALIDPARAMETER);
        std::vector<ElementStatus> all;
        for (auto const& [name, entry] : file_->directory().children(element_->entry)) {
            all.push_back({file_->directory().at(entry)});
        }
        *elements = new ElementEnumerator(std::move(all));
    });
}

HRESULT StorageObject::DestroyElement(OLECHAR const* name) noexcept {
    return change([&] { file_->destroy(element_->entry, element(name)); });
}

HRESULT StorageObject::RenameElement(OLECHAR const* oldName, OLECHAR const* newName) noexcept {
    return change([&] {
        auto const text = checkedName(newName);
        EntryId const renamed = element(oldName);
        EntryId const other = file_->directory().find(element_->entry, text);
        require(other == noEntry || other == renamed, STG_E_ACCESSDENIED);
        file_->directory().rename(element_->entry, renamed, text);
    });
}

HRESULT StorageObject::SetElementTimes(OLECHAR const* name, FILETIME const* created,
                                       FILETIME const*, FILETIME const* modified) noexcept {
    return change([&] {
        Entry& entry = file_->directory().change(name == nullptr ? element_->entry : element(name));
        // Streams have no times.
        if (!entry.isStorage()) return;
        if (created != nullptr) entry.created = fromFileTime(*created);
        if (modified != nullptr) entry.modified = fromFileTime(*modified);
    });
}

HRESULT StorageObject::SetClass(REFCLSID classId) noexcept {
    return change([&] { file_->directory().change(element_->entry).classId = classId; });
}

HRESULT StorageObject::SetStateBits(DWORD bits, DWORD mask) noexcept {
    return change([&] {
        Entry& entry = file_->directory().change(element_->entry);
        entry.stateBits = (entry.stateBits & ~mask) | (bits & mask);
    });
}

HRESULT StorageObject::Stat(STATSTG* status, DWORD flags) noexcept {
    return use([&] {
        Entry const& entry = file_->directory().at(element_->entry);
        describe(entry, isRoot() ? path_ : entry.name, element_->mode, flags, status);
    });
}

}  // namespace velk::platform::storage
