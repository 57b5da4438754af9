#include "text/result_codes.h"

#include <windows.h>

#include <olectl.h>

#include "com/error.h"

namespace velk::velkcom {
namespace {

struct KnownCode {
    HRESULT code;
    char const* symbol;
    char const* meaning;
};

#define VELKCOM_CODE(symbol, meaning) \
    { symbol, #symbol, meaning }
#define VELKCOM_SYSTEM_ERROR(symbol, meaning) \
    { HRESULT_FROM_WIN32(symbol), #symbol, meaning }

KnownCode const knownCodes[] = {
    VELKCOM_CODE(S_OK, "success"),
    VELKCOM_CODE(S_FALSE, "nothing was done, or nothing was found"),
    VELKCOM_CODE(E_NOTIMPL, "not implemented"),
    VELKCOM_CODE(E_NOINTERFACE, "the object does not have this interface"),
    VELKCOM_CODE(E_POINTER, "a pointer is null"),
    VELKCOM_CODE(E_ABORT, "the operation was ended"),
    VELKCOM_CODE(E_FAIL, "an error that is not described further"),
    VELKCOM_CODE(E_UNEXPECTED, "the object is not in a state for this"),
    VELKCOM_CODE(E_ACCESSDENIED, "access is denied"),
    VELKCOM_CODE(E_HANDLE, "a handle is not valid"),
    VELKCOM_CODE(E_OUTOFMEMORY, "out of memory"),
    VELKCOM_CODE(E_INVALIDARG, "an argument is not valid"),
    VELKCOM_CODE(DISP_E_UNKNOWNINTERFACE, "unknown interface"),
    VELKCOM_CODE(DISP_E_MEMBERNOTFOUND, "the object has no such member, or not for this use"),
    VELKCOM_CODE(DISP_E_PARAMNOTFOUND, "the member has no such parameter"),
    VELKCOM_CODE(DISP_E_TYPEMISMATCH, "an argument has the wrong type"),
    VELKCOM_CODE(DISP_E_UNKNOWNNAME, "the object does not know this name"),
    VELKCOM_CODE(DISP_E_NONAMEDARGS, "the member takes no named arguments"),
    VELKCOM_CODE(DISP_E_BADVARTYPE, "an argument has a type that does not exist"),
    VELKCOM_CODE(DISP_E_EXCEPTION, "the object reported an error"),
    VELKCOM_CODE(DISP_E_OVERFLOW, "a value is out of the range of its type"),
    VELKCOM_CODE(DISP_E_BADINDEX, "an index is out of range"),
    VELKCOM_CODE(DISP_E_UNKNOWNLCID, "the language is unknown"),
    VELKCOM_CODE(DISP_E_ARRAYISLOCKED, "an array is in use"),
    VELKCOM_CODE(DISP_E_BADPARAMCOUNT, "wrong number of arguments"),
    VELKCOM_CODE(DISP_E_PARAMNOTOPTIONAL, "a required argument is missing"),
    VELKCOM_CODE(DISP_E_BADCALLEE, "the object called is not valid"),
    VELKCOM_CODE(DISP_E_NOTACOLLECTION, "the object is no collection"),
    VELKCOM_CODE(DISP_E_DIVBYZERO, "division by zero"),
    VELKCOM_CODE(TYPE_E_REGISTRYACCESS, "the registry entries of a type library cannot be used"),
    VELKCOM_CODE(TYPE_E_LIBNOTREGISTERED, "the type library is not registered"),
    VELKCOM_CODE(TYPE_E_INVDATAREAD, "the type library is damaged"),
    VELKCOM_CODE(TYPE_E_UNSUPFORMAT, "the type library has an unknown format"),
    VELKCOM_CODE(TYPE_E_ELEMENTNOTFOUND, "the type library has no such element"),
    VELKCOM_CODE(TYPE_E_IOERROR, "the type library cannot be read"),
    VELKCOM_CODE(TYPE_E_CANTLOADLIBRARY, "the type library cannot be loaded"),
    VELKCOM_CODE(CLASS_E_NOAGGREGATION, "the class cannot be part of another object"),
    VELKCOM_CODE(CLASS_E_CLASSNOTAVAILABLE, "the module does not have this class"),
    VELKCOM_CODE(REGDB_E_READREGDB, "the registry cannot be read"),
    VELKCOM_CODE(REGDB_E_CLASSNOTREG, "the class is not registered"),
    VELKCOM_CODE(REGDB_E_IIDNOTREG, "the interface is not registered"),
    VELKCOM_CODE(CO_E_NOTINITIALIZED, "the thread has not entered COM"),
    VELKCOM_CODE(CO_E_CLASSSTRING, "no class is registered under this name"),
    VELKCOM_CODE(CO_E_DLLNOTFOUND, "the module of the class is not there"),
    VELKCOM_CODE(CO_E_ERRORINDLL, "the module of the class cannot be loaded"),
    VELKCOM_CODE(RPC_E_CHANGED_MODE, "the thread has entered COM in another way"),
    VELKCOM_CODE(SELFREG_E_TYPELIB, "the type library cannot be registered"),
    VELKCOM_CODE(SELFREG_E_CLASS, "the classes cannot be registered"),
    VELKCOM_CODE(STG_E_FILENOTFOUND, "the file is not there"),
    VELKCOM_CODE(STG_E_PATHNOTFOUND, "the folder is not there"),
    VELKCOM_CODE(STG_E_TOOMANYOPENFILES, "too many files are open"),
    VELKCOM_CODE(STG_E_ACCESSDENIED, "access is denied"),
    VELKCOM_CODE(STG_E_INSUFFICIENTMEMORY, "out of memory"),
    VELKCOM_CODE(STG_E_DISKISWRITEPROTECTED, "it must not be written to"),
    VELKCOM_CODE(STG_E_WRITEFAULT, "the file cannot be written"),
    VELKCOM_CODE(STG_E_READFAULT, "the file cannot be read"),
    VELKCOM_CODE(STG_E_SHAREVIOLATION, "another program uses the file"),
    VELKCOM_CODE(STG_E_LOCKVIOLATION, "another program uses the file"),
    VELKCOM_CODE(STG_E_FILEALREADYEXISTS,
                 "there is one of this name already, or the file is no compound file"),
    VELKCOM_CODE(STG_E_INVALIDPARAMETER, "a value, a name or an id is not possible here"),
    VELKCOM_CODE(STG_E_MEDIUMFULL, "there is no room on the disk"),
    VELKCOM_CODE(STG_E_INVALIDHEADER, "the file is damaged"),
    VELKCOM_CODE(STG_E_INVALIDNAME, "the name is not possible"),
    VELKCOM_CODE(STG_E_DOCFILECORRUPT, "the file is damaged"),
    VELKCOM_CODE(STG_E_OLDFORMAT, "the file has an unknown format"),
    VELKCOM_SYSTEM_ERROR(ERROR_FILE_NOT_FOUND, "the file is not there"),
    VELKCOM_SYSTEM_ERROR(ERROR_PATH_NOT_FOUND, "the folder is not there"),
    VELKCOM_SYSTEM_ERROR(ERROR_INVALID_DATA, "the data is not valid"),
    VELKCOM_SYSTEM_ERROR(ERROR_WRITE_PROTECT, "it must not be written to"),
    VELKCOM_SYSTEM_ERROR(ERROR_NO_UNICODE_TRANSLATION,
                         "the code page of the property set lacks a character"),
    VELKCOM_SYSTEM_ERROR(ERROR_INSUFFICIENT_BUFFER, "a path is too long"),
    VELKCOM_SYSTEM_ERROR(ERROR_MOD_NOT_FOUND, "the module, or one that it needs, is not there"),
    VELKCOM_SYSTEM_ERROR(ERROR_PROC_NOT_FOUND, "the module has no such function"),
    VELKCOM_SYSTEM_ERROR(ERROR_BAD_EXE_FORMAT,
                         "the file is no module of this system, or not whole"),
    VELKCOM_SYSTEM_ERROR(ERROR_BUSY, "another program is changing the registry"),
    VELKCOM_SYSTEM_ERROR(ERROR_BAD_PATHNAME, "the registered path is not absolute, or no module's"),
    VELKCOM_SYSTEM_ERROR(ERROR_FILENAME_EXCED_RANGE, "a path is too long"),
    VELKCOM_SYSTEM_ERROR(ERROR_REVISION_MISMATCH,
                         "the program has loaded a QtCore of another version than the module's"),
    VELKCOM_SYSTEM_ERROR(ERROR_BADDB, "the registry is damaged"),
    VELKCOM_SYSTEM_ERROR(ERROR_CANTOPEN, "the registry cannot be opened"),
    VELKCOM_SYSTEM_ERROR(ERROR_CANTREAD, "the registry cannot be read"),
    VELKCOM_SYSTEM_ERROR(ERROR_CANTWRITE, "the registry cannot be written"),
    VELKCOM_SYSTEM_ERROR(ERROR_REGISTRY_CORRUPT, "the registry is damaged"),
    VELKCOM_SYSTEM_ERROR(ERROR_REGISTRY_IO_FAILED, "the registry cannot be read or written"),
    VELKCOM_SYSTEM_ERROR(ERROR_DLL_INIT_FAILED, "the module did not start"),
    VELKCOM_SYSTEM_ERROR(ERROR_RESOURCE_TYPE_NOT_FOUND, "the module lacks a resource"),
    VELKCOM_SYSTEM_ERROR(ERROR_RESOURCE_NAME_NOT_FOUND, "the module lacks a resource"),
};

KnownCode const* findCode(HRESULT code) {
    for (auto const& known : knownCodes) {
        if (known.code == code) return &known;
    }
    return nullptr;
}

}  // namespace

std::string describeCode(HRESULT code) {
    KnownCode const* const known = findCode(code);
    std::string const number = com::hexadecimal(code);
    return known != nullptr ? std::string(known->symbol) + " (" + number + ")" : number;
}

std::string meaningOfCode(HRESULT code) {
    KnownCode const* const known = findCode(code);
    return known != nullptr ? known->meaning : std::string();
}

std::string withMeaning(com::Error const& error) {
    std::string const meaning = meaningOfCode(error.code());
    return error.what() + (meaning.empty() ? "" : " (" + meaning + ")");
}

}  // namespace velk::velkcom
