// Reads any bytes as a type library, prints it, which asks for everything that
// it says, and looks its names up.

#include <cstddef>
#include <cstdint>
#include <sstream>

#include "platform/typelib/format/msft_reader.h"
#include "platform/typelib/format/pe_resources.h"
#include "platform/typelib/interfaces/type_info.h"
#include "platform/typelib/interfaces/type_library.h"
#include "typelib_printer.h"

namespace {

using namespace velk::typelib;

void lookUp(TypeLibrary& library, TypeInfo& type, MEMBERID member) {
    Bstr name;
    if (FAILED(type.GetDocumentation(member, name.out(), nullptr, nullptr, nullptr))) return;
    if (!name.get()) return;
    LPOLESTR text = name.get();
    MEMBERID id = 0;
    type.GetIDsOfNames(&text, 1, &id);
    ITypeInfo* types[2] = {};
    MEMBERID members[2] = {};
    USHORT count = 2;
    library.FindName(text, 0, types, members, &count);
    for (USHORT at = 0; at < count; ++at) types[at]->Release();
}

void ask(std::unique_ptr<LibraryModel const> model) {
    auto const library = TypeLibrary::create(std::move(model));
    std::ostringstream text;
    velk::velkcom::printTypeLibrary(library.get(), text);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        auto const type = library->type(i);
        lookUp(*library, *type, MEMBERID_NIL);
        for (auto const& function : type->model().functions) lookUp(*library, *type, function.id);
        for (auto const& field : type->model().variables) lookUp(*library, *type, field.id);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    ByteView bytes(std::as_bytes(std::span(data, size)));
    guarded([&] {
        if (!isPortableExecutable(bytes)) return ask(readMsftLibrary(bytes));
        auto const read = [&](std::uint64_t offset, std::size_t length) {
            auto const part = bytes.part(offset, length);
            return std::vector<std::byte>(part.data(), part.data() + part.size());
        };
        auto const resource = portableResource(read, u"TYPELIB", 1);
        if (resource) ask(readMsftLibrary(ByteView(*resource)));
    });
    return 0;
}
