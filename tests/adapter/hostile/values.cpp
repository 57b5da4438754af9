#include "hostile/values.h"

#include <sstream>

#include "hostile/puppets.h"
#include "servers/automation/test_server_ids.h"

namespace velk::test::hostile {
namespace {

constexpr VARTYPE plainTypes[] = {VT_EMPTY, VT_NULL, VT_I1,   VT_I2,    VT_I4,     VT_I8, VT_UI1,
                                  VT_UI2,   VT_UI4,  VT_UI8,  VT_INT,   VT_UINT,   VT_R4, VT_R8,
                                  VT_CY,    VT_DATE, VT_BOOL, VT_ERROR, VT_DECIMAL};
constexpr VARTYPE elementTypes[] = {VT_VARIANT, VT_BSTR, VT_I4,      VT_R8,      VT_UI1,
                                    VT_DECIMAL, VT_BOOL, VT_UNKNOWN, VT_DISPATCH};
// Codes that members know, and few enough elements for any type.
constexpr int numbers[] = {0,  1,  2,  -1,   3,      8,      9,      12,     13,          36,
                           14, 99, 70, 1000, 0x2000, 0x2003, 0x200c, 0x4003, -2147483647, 65535};
constexpr double reals[] = {0.5, -1.0, 1e300, -1e-300, 2958466.0, 12.25};

std::basic_string<OLECHAR> wide(char const* text) {
    return {text, text + std::strlen(text)};
}

std::vector<std::basic_string<OLECHAR>> wordsOf(std::string const& text) {
    std::vector<std::basic_string<OLECHAR>> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) words.push_back(wide(word.c_str()));
    return words;
}

std::basic_string<OLECHAR> text(Actor& actor) {
    static auto const texts = wordsOf(
        "12 x true Point Person Loose Color Red VelkTest.Sample VelkTest.Faulty "
        "VelkTest.NoDispatch VelkTest.NoInstance {7E0B5A10-3C64-4D2F-9B18-52D6A1C40E05} "
        "{7E0B5A10-3C64-4D2F-9B18-52D6A1C40E06} {00020400-0000-0000-C000-000000000046} "
        "{00000000-0000-0000-C000-000000000046} /dev/null 1/2/2003 1e999 ");
    switch (actor.choices.below(8)) {
        case 0:
            return memberName(actor);
        case 1:
            return std::basic_string<OLECHAR>(actor.choices.byte(), OLESTR('\xd800'));
        case 2:
            return {OLESTR('a'), OLECHAR(0), OLESTR('b')};
        case 3: {
            mzComStringC const path(Puppet::serverPath().c_str());
            return {path.oleText(), static_cast<std::size_t>(path.length())};
        }
        default:
            return actor.choices.of(texts);
    }
}

void clearOrEmpty(VARIANT& value) {
    if (FAILED(VariantClear(&value))) value = {};
}

}  // namespace

NativeValues::~NativeValues() {
    for (auto& value : values_) clearOrEmpty(value);
}

VARIANT& NativeValues::make(int depth) {
    VARIANT& value = values_.emplace_back();
    value = {};
    switch (actor_.choices.below(10)) {
        case 0:
        case 1:
            makePlain(value);
            break;
        case 2:
            makeText(value);
            break;
        case 3:
        case 4:
            makeObject(value, VT_DISPATCH);
            break;
        case 5:
            makeObject(value, VT_UNKNOWN);
            break;
        case 6:
            makeArray(value);
            break;
        case 7:
            makeReference(value, depth);
            break;
        case 8:
            makeTypedReference(value);
            break;
        default:
            if (actor_.choices.oneIn(2))
                makeRecord(value);
            else
                value.vt = actor_.choices.bits<VARTYPE>();
            break;
    }
    return value;
}

void NativeValues::makePlain(VARIANT& value) {
    VARTYPE const type = actor_.choices.of(plainTypes);
    if (type == VT_DECIMAL) {
        value.decVal.Lo64 = actor_.choices.bits<ULONGLONG>();
        value.decVal.scale = static_cast<BYTE>(actor_.choices.byte());
        value.decVal.sign = static_cast<BYTE>(actor_.choices.byte());
    } else if (actor_.choices.oneIn(2)) {
        value.llVal = actor_.choices.of(numbers);
    } else {
        value.llVal = actor_.choices.bits<LONGLONG>();
    }
    value.vt = type;
}

void NativeValues::makeText(VARIANT& value) {
    value.vt = VT_BSTR;
    if (!actor_.choices.oneIn(8)) value.bstrVal = com::makeBstr(text(actor_)).release();
}

void NativeValues::makeObject(VARIANT& value, VARTYPE type) {
    value.vt = type;
    auto const object =
        actor_.world.mayTie() ? actor_.world.native(actor_.choices.byte()) : nativePuppet();
    if (type == VT_UNKNOWN) {
        value.punkVal = com::ComPtr<IUnknown>(object).detach();
    } else if (object) {
        value.pdispVal = object.query<IDispatch>(IID_IDispatch).detach();
    }
}

void NativeValues::makeArray(VARIANT& value) {
    VARTYPE const type = actor_.choices.of(elementTypes);
    SAFEARRAYBOUND bounds[3];
    UINT const dimensions = 1 + actor_.choices.below(3);
    for (auto& bound : bounds)
        bound = {actor_.choices.below(4), static_cast<LONG>(actor_.choices.below(3)) - 1};
    value.vt = VT_ARRAY | type;
    if (actor_.choices.oneIn(8)) return;
    value.parray = SafeArrayCreate(type, dimensions, bounds);
    LONG place[3] = {bounds[0].lLbound, bounds[1].lLbound, bounds[2].lLbound};
    if (type == VT_VARIANT && dimensions == 1 && bounds[0].cElements > 0) {
        VARIANT element = ownedValue(actor_);
        SafeArrayPutElement(value.parray, place, &element);
        clearOrEmpty(element);
    } else if (type == VT_DISPATCH || type == VT_UNKNOWN) {
        SafeArrayPutElement(value.parray, place, nativePuppet().get());
    }
    if (actor_.choices.oneIn(8)) SafeArrayDestroyData(value.parray);
}

void NativeValues::makeRecord(VARIANT& value) {
    value.vt = VT_RECORD;
    if (World::records.empty() || actor_.choices.oneIn(6)) return;
    auto const info = actor_.choices.of(World::records);
    value.pvRecord = info->RecordCreate();
    if (value.pvRecord) value.pRecInfo = com::ComPtr<IRecordInfo>(info).detach();
}

void NativeValues::makeReference(VARIANT& value, int depth) {
    value.vt = VT_BYREF | VT_VARIANT;
    switch (actor_.choices.below(6)) {
        case 0:
            value.pvarVal = &value;
            break;
        case 1:
            break;
        default:
            value.pvarVal = depth < 4 ? &make(depth + 1) : nullptr;
            break;
    }
}

void NativeValues::makeTypedReference(VARIANT& value) {
    VARIANT& target = values_.emplace_back();
    target = {};
    switch (actor_.choices.below(5)) {
        case 0:
            makeText(target);
            break;
        case 1:
            makeObject(target, VT_DISPATCH);
            break;
        case 2:
            makeArray(target);
            break;
        case 3:
            makeRecord(target);
            break;
        default:
            makePlain(target);
            break;
    }
    value.vt = VT_BYREF | target.vt;
    if (actor_.choices.oneIn(8)) return;
    if (target.vt == VT_RECORD) {
        value.pvRecord = target.pvRecord;
        value.pRecInfo = target.pRecInfo;
    } else if (target.vt == VT_DECIMAL) {
        value.pdecVal = &target.decVal;
    } else {
        value.byref = &target.llVal;
    }
}

VARIANT ownedValue(Actor& actor) {
    VARIANT copy{};
    NativeValues values(actor);
    VARIANT const& made = values.make();
    if (!(made.vt & VT_BYREF)) VariantCopy(&copy, const_cast<VARIANT*>(&made));
    if (copy.vt == VT_EMPTY && actor.choices.oneIn(2)) copy.vt = actor.choices.bits<VARTYPE>();
    return copy;
}

void changeReferred(Actor& actor, DISPPARAMS const& parameters) {
    for (UINT i = 0; i < parameters.cArgs; ++i) {
        VARIANT& argument = parameters.rgvarg[i];
        if (!(argument.vt & VT_BYREF) || !argument.byref) continue;
        switch (argument.vt & ~VT_BYREF) {
            case VT_VARIANT: {
                if (argument.pvarVal == &argument) break;
                VARIANT fresh = ownedValue(actor);
                std::swap(*argument.pvarVal, fresh);
                clearOrEmpty(fresh);
                break;
            }
            case VT_BSTR:
                SysFreeString(*argument.pbstrVal);
                *argument.pbstrVal = com::makeBstr(text(actor)).release();
                break;
            case VT_DISPATCH: {
                com::ComPtr<IDispatch> const former(*argument.ppdispVal, com::adopt);
                *argument.ppdispVal = nativePuppet().query<IDispatch>(IID_IDispatch).detach();
                break;
            }
            case VT_I4:
                *argument.plVal = actor.choices.of(numbers);
                break;
            case VT_DECIMAL:
                // Callers find another type code in the first word.
                argument.pdecVal->wReserved = actor.choices.bits<USHORT>();
                argument.pdecVal->scale = static_cast<BYTE>(actor.choices.byte());
                break;
            default:
                break;
        }
    }
}

mzComVariantC hostValue(Actor& actor) {
    auto& choices = actor.choices;
    switch (choices.below(9)) {
        case 0:
            return choices.of(numbers);
        case 1:
            return choices.bits<short>();
        case 2:
            return choices.of(reals);
        case 3: {
            auto const chosen = text(actor);
            return mzComStringC::fromBSTR(mzBstrHolderC::copyOf(com::makeBstr(chosen).get()));
        }
        case 4:
            return mzComVariantC::createSymbolRef(actor.world.mayTie()
                                                      ? actor.world.host(choices.byte())
                                                      : mzComVariantC(choices.of(numbers)));
        case 5: {
            mzComVariantC nothing;
            nothing.set(mzComPtrT<mzIUnknown>());
            return nothing;
        }
        case 6:
            return {};
        default:
            return actor.world.mayTie() ? actor.world.host(choices.byte()) : hostPuppet();
    }
}

// Nothing that changes files, sleeps, or takes much memory, and no "Item": what
// is put into the server's object by that nobody gets out again.
std::basic_string<OLECHAR> memberName(Actor& actor) {
    static auto const names = wordsOf(
        "Member Count Add Remove RemoveAll Keys Items Key Exists CompareMode LBound "
        "UBound InsertAt RemoveAt Find Copy ChangeType Create flags vt val CreateObject "
        "GetObject QueryInterface getLastExceptionInfo GetEnumConstant BstrSource Scode "
        "EchoI1 EchoI4 EchoUI8 EchoR8 EchoCy EchoDate EchoDecimal EchoBstr EchoBool "
        "EchoError EchoVariant EchoDispatch EchoUnknown EchoArray EchoRecord ChangeLong "
        "ChangeText ChangeVariant ChangeArray ChangeLongs ChangeDispatch ChangePoint "
        "ChangePerson ChangeRecord GiveVariant GiveDispatch GiveArray GivePoint GiveTwo "
        "Value Name Peer AddNumbers Describe Join SumArray MakePoint MakePerson SumLoose "
        "Fail FailPlain FailByCode Mismatch CallBack Keep Kept Same RecordedCalls Twice "
        "ExtraName Throws ThrowsAcross DeferredFillIn DeferredThrows GarbageArgumentIndex "
        "ExceptionSuccessCode PositiveCode BadType BadTypeAllBits NullRecord NullArray "
        "NullByRef SelfReference NullDispatch EmbeddedNull Vanish Recurse "
        "ChangesTypeOfByRef WrongDispId NamesFail NamesUnknown x y name home data numbers "
        "bindToDispatch InitApplication __vbs_isnothing HasClass Constant CreateNullType "
        "AddRef Release ");
    // The default member, too.
    return actor.choices.oneIn(16) ? std::basic_string<OLECHAR>() : actor.choices.of(names);
}

char const* className(Actor& actor) {
    constexpr char const* names[] = {"scripting.dictionary",
                                     "qxttools.array",
                                     "qxttools.comadapter",
                                     "comadapter.dspwrapper",
                                     "comadapter.variantwrapper",
                                     "qxttools.scriptmanager",
                                     "qxttools.fileproperties",
                                     "no.such.class",
                                     ""};
    return actor.choices.of(names);
}

IID interfaceId(Actor& actor) {
    static IID const ids[] = {IID_IUnknown,
                              IID_IDispatch,
                              IID_IClassFactory,
                              IID_ITypeInfo,
                              IID_NULL,
                              IID_Ivelkdspwrap,
                              IID_IVelkCOMProxy,
                              server::sampleInterface,
                              server::sampleExtraInterface};
    return actor.choices.oneIn(8) ? actor.choices.bits<IID>() : actor.choices.of(ids);
}

HRESULT oddCode(Actor& actor) {
    constexpr HRESULT codes[] = {S_OK,
                                 S_FALSE,
                                 E_FAIL,
                                 E_OUTOFMEMORY,
                                 DISP_E_EXCEPTION,
                                 DISP_E_MEMBERNOTFOUND,
                                 DISP_E_TYPEMISMATCH,
                                 DISP_E_PARAMNOTFOUND,
                                 DISP_E_BADPARAMCOUNT,
                                 RPC_E_DISCONNECTED};
    return actor.choices.of(codes);
}

}  // namespace velk::test::hostile
