#include <iostream>

#include "com/utf.h"
#include "program.h"

int wmain(int count, wchar_t** arguments) {
    std::vector<std::string> converted;
    for (int i = 1; i < count; ++i) converted.push_back(velk::com::toUtf8(arguments[i]));
    return velk::velkcom::runProgram(converted, std::cout, std::cerr);
}
