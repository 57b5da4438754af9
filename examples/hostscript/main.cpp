/// Host code that uses native objects.
///
///   hostscript MODULE
///
/// MODULE is the adapter module. What the sample server answers goes to
/// standard output and is the same on every system; what the system's own
/// objects answer goes to standard error.
#include <exception>
#include <iostream>

#include <windows.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "tours.h"

namespace {

/// Loads the module, whose script objects the host then knows. It stays.
void loadModule(char const* path) {
    // What the module needs lies beside it, and is looked for nowhere else.
    QString const name =
        QDir::toNativeSeparators(QFileInfo(QFile::decodeName(path)).absoluteFilePath());
    if (!LoadLibraryExW(reinterpret_cast<OLECHAR const*>(name.utf16()), nullptr,
                        LOAD_WITH_ALTERED_SEARCH_PATH)) {
        throw std::runtime_error(std::string("cannot load the module ") + path);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: hostscript MODULE\n";
        return 2;
    }
    try {
        loadModule(argv[1]);
        auto adapter = hostscript::ScriptObject::create("qxttools.comadapter");
        hostscript::tourSample(adapter);
        hostscript::tourSystem(adapter);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "hostscript: " << error.what() << "\n";
        return 1;
    }
}
