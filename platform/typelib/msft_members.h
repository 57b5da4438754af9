/// Functions and variables of one type in the MSFT format.
#pragma once

#include "platform/typelib/msft_tables.h"

namespace velk::typelib::msft {

/// Reads the member group of one type.
///
/// @param group     the bytes of the group, without its leading size
/// @param pointers  how many times wider pointers are here than in the library
void readMembers(Tables& tables, TypeModel& type, ByteView group, std::size_t functions,
                 std::size_t variables, unsigned pointers);

}  // namespace velk::typelib::msft
