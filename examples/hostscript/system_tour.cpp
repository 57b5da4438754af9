#include <iostream>

#include "tours.h"

namespace hostscript {

void tourSystem(ScriptObject& adapter) {
    try {
        ScriptObject dictionary(adapter.call("CreateObject", {"Scripting.Dictionary"}));
        dictionary.call("Add", {"native", 1});
        std::cerr << "the system's Scripting.Dictionary holds " << textOf(dictionary.get("Count"))
                  << " entry, native = " << textOf(dictionary.get("Item", {"native"})) << "\n";
        ScriptObject files(adapter.call("CreateObject", {"Scripting.FileSystemObject"}));
        std::cerr << "its FileSystemObject names the folder of a path: "
                  << textOf(files.call("GetParentFolderName", {"C:\\folder\\file.txt"})) << "\n";
    } catch (CallError const& error) {
        std::cerr << "no objects of the system: " << error.what() << "\n";
    }
}

}  // namespace hostscript
