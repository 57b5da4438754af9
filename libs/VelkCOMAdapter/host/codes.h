#pragma once

/// Host result codes: what every host operation that can fail returns.
inline constexpr unsigned mzSuccess = 0;
/// General failure; `invokeByName` normally delivers an exception object with it.
inline constexpr unsigned mzFailure = 1;
/// Only from `invokeByName`: the object has no such member.
inline constexpr unsigned mzMemberNotFound = 4;

/// Call kinds: the bit set that tells `invokeByName` how a member is used.
/// Method and property get come together when the caller cannot tell them apart.
inline constexpr unsigned mzCallMethod = 1;
inline constexpr unsigned mzCallPropertyGet = 2;
inline constexpr unsigned mzCallPropertyPut = 4;

/// Type codes of `mzComVariantC::getType`; each is a single bit.
inline constexpr int mzTypeEmpty = 0;
inline constexpr int mzTypeInteger = 1;
inline constexpr int mzTypeDouble = 2;
inline constexpr int mzTypeString = 4;
inline constexpr int mzTypeObject = 8;
