/// Values of every kind, sane and not, as the choices of an actor say.
#pragma once

#include <deque>

#include "hostile/world.h"

namespace velk::test::hostile {

/// Native values that last as long as this. A reference never changes the type
/// of what another one refers to: whoever is called may write through all.
class NativeValues {
  public:
    explicit NativeValues(Actor& actor) : actor_(actor) {}
    ~NativeValues();
    NativeValues(NativeValues const&) = delete;
    NativeValues& operator=(NativeValues const&) = delete;

    VARIANT& make(int depth = 0);

  private:
    void makePlain(VARIANT& value);
    void makeText(VARIANT& value);
    void makeObject(VARIANT& value, VARTYPE type);
    void makeArray(VARIANT& value);
    void makeRecord(VARIANT& value);
    void makeReference(VARIANT& value, int depth);
    void makeTypedReference(VARIANT& value);

    Actor& actor_;
    std::deque<VARIANT> values_;
};

/// A value that the caller clears, or one that holds nothing, of any type code.
VARIANT ownedValue(Actor& actor);
/// Puts other values behind the references among a call's arguments.
void changeReferred(Actor& actor, DISPPARAMS const& parameters);

mzComVariantC hostValue(Actor& actor);
std::basic_string<OLECHAR> memberName(Actor& actor);
char const* className(Actor& actor);
IID interfaceId(Actor& actor);
HRESULT oddCode(Actor& actor);

}  // namespace velk::test::hostile
