#include <iostream>

#include "program.h"

int main(int count, char** arguments) {
    return velk::velkcom::runProgram({arguments + (count > 0 ? 1 : 0), arguments + count},
                                     std::cout, std::cerr);
}
