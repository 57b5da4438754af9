#include "help_text.h"

namespace velk::velkcom {
namespace {

constexpr char overview[] =
    R"(velkcom - registers the adapter module, calls automation objects, and reads
and changes the properties of documents

usage:
  velkcom register [--user] [MODULE]
  velkcom unregister [--user] [MODULE]
  velkcom call [--get | --put | --putref | --method] PROGID MEMBER [ARGUMENT...]
  velkcom typelib FILE
  velkcom enum FILE|PROGID ENUM CONSTANT
  velkcom props list FILE|FOLDER... [--json]
  velkcom props get FILE SET KEY
  velkcom props set FILE SET KEY VALUE [--type TYPE]
  velkcom props remove FILE SET KEY
  velkcom props rename FILE SET KEY NEWKEY
  velkcom props create FILE
  velkcom COMMAND --help
  velkcom --help | --version

exit code: 0 done, 1 failed, 2 command line not understood
)";

constexpr char registration[] =
    R"(usage: velkcom register [--user] [MODULE]
       velkcom unregister [--user] [MODULE]

Lets MODULE write its classes and type library to the registry, or remove them.
MODULE is the path of a self-registering module; without it, the adapter
module beside this program.

  --user   for the current user only; without it for the machine, which
           usually needs an administrator's rights
)";

constexpr char calling[] =
    R"(usage: velkcom call [OPTION] PROGID MEMBER [ARGUMENT...]

Creates an object of class PROGID (or "{class id}"), calls its MEMBER and
prints the type and value of the result.

MEMBER is a name. An empty one is the default member. To go on with an object
that a member gives, write its arguments in parentheses and a dot:
  velkcom call VelkCOMAdapter.VelkCOMProxy 'CreateObject(scripting.dictionary).Count'
Arguments in parentheses are separated by commas; in "double quotes" they are
text with everything in it, and a double quote is written twice. ARGUMENTs
after MEMBER are added to those of its last name.

An ARGUMENT is one of
  int:5  int64:5  short:5  byte:5     whole numbers of 32, 64, 16 and 8 bits
  double:2.5  single:2.5              floating-point numbers
  currency:2.5  decimal:2.5           exact numbers
  bool:true  bool:false
  date:2024-02-29  'date:2024-02-29 13:45:10'
  string:text                         text, whatever it looks like
  error:0x80020004                    a result code
  empty  null  nothing  missing       no value, null, no object, left out
  anything else                       guessed: an int (or int64), a double,
                                      a bool from true or false, else text

  --method   only as a method
  --get      only as a property to read
  --put      as a property to write; the last argument is the new value
  --putref   the same, with an object by reference
  --         what follows is no option
Without these the member is called as a method or read as a property,
whichever it is. The options hold for the last name of MEMBER.
)";

constexpr char typelib[] =
    R"(usage: velkcom typelib FILE

Prints the type library in FILE, a .tlb file or a module that carries one.
Of a module with several the first is taken; a number after its name asks for
another: x.dll\2 or x.dll/2 is the second library of x.dll.
)";

constexpr char enumeration[] =
    R"(usage: velkcom enum FILE ENUM CONSTANT
       velkcom enum PROGID ENUM CONSTANT

Prints the value of CONSTANT of the enumeration ENUM in the type library FILE,
or in the library that an object of the class PROGID tells of. Upper and lower
case matter in both names. What contains a slash, or is there as a file, is a
FILE. As for "typelib", x.dll/2 is the second library of a module.
)";

constexpr char properties[] =
    R"(usage: velkcom props list FILE|FOLDER... [--json]
       velkcom props get FILE SET KEY
       velkcom props set FILE SET KEY VALUE [--type TYPE]
       velkcom props remove FILE SET KEY
       velkcom props rename FILE SET KEY NEWKEY
       velkcom props create FILE

Shows and changes the OLE property sets of documents (compound files).

list    all properties of each FILE, and of the documents in each FOLDER and
        below; other files in a FOLDER are passed over
get     prints the value of one property
set     writes one property; a missing SET is made
remove  takes a property out of the file
rename  gives a property another name
create  makes a new document with empty summary sets

SET is summary, docsummary, media or custom, in any case, or a format id in
braces. KEY is a property's name, or its id in decimal; in summary, docsummary
and media also a well-known name, as Title or Company.

  --json       one JSON object a document on a line of its own, with keys and
               values as scripts see them
  --type TYPE  what VALUE is written as: i2, i4, ui4, r4, r8, bool, lpstr,
               lpwstr, bstr, filetime or empty. Without it the property keeps
               its type, or gets its well-known one, or is text (lpwstr). A
               filetime is written as 2024-03-05T09:07:04.045Z, in UTC.
  --           what follows is no option
)";

}  // namespace

std::string helpText(std::string const& topic) {
    if (topic == "register" || topic == "unregister") return registration;
    if (topic == "call") return calling;
    if (topic == "typelib") return typelib;
    if (topic == "enum") return enumeration;
    if (topic == "props") return properties;
    return overview;
}

}  // namespace velk::velkcom
