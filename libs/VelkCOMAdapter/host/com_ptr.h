#pragma once

#include <utility>

#include "host/codes.h"
#include "host/unknown.h"

/// Owning pointer to a host object, empty or holding one reference.
/// One pointer object must not be changed by two threads at a time.
class mzComPtrC {
  public:
    mzComPtrC() = default;
    /// Takes a reference of its own; null gives an empty pointer.
    mzComPtrC(mzIUnknown* object) : object_(object) { acquire(); }
    mzComPtrC(mzComPtrC const& other) : object_(other.object_) { acquire(); }
    mzComPtrC(mzComPtrC&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~mzComPtrC() { detach(); }

    mzComPtrC& operator=(mzComPtrC other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /// Refers to `object` from now on, with a reference of its own, and gives
    /// up the object held before.
    void attach(mzIUnknown* object) { *this = mzComPtrC(object); }

    /// Releases the reference and empties the pointer. The count that
    /// `release` returned, 0 for an empty pointer.
    unsigned detach() {
        mzIUnknown* const held = std::exchange(object_, nullptr);
        return held ? held->release() : 0;
    }

    /// The raw pointer, without a new reference; null when empty.
    mzIUnknown* iface() const { return object_; }
    mzIUnknown* operator->() const { return object_; }
    bool isValid() const { return object_ != nullptr; }

  private:
    void acquire() {
        if (object_) object_->addRef();
    }

    mzIUnknown* object_ = nullptr;
};

/// Owning pointer to one host interface. `T` is a host interface that has the
/// static function `interfaceId()`.
template <class T>
class mzComPtrT {
  public:
    mzComPtrT() = default;
    /// Takes a reference of its own; null gives an empty pointer.
    mzComPtrT(T* object) : object_(object) { acquire(); }
    /// Empty when the object does not support `T`.
    mzComPtrT(mzComPtrC const& source) { query(source.iface()); }
    mzComPtrT(mzComPtrT const& other) : object_(other.object_) { acquire(); }
    mzComPtrT(mzComPtrT&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~mzComPtrT() { detach(); }

    mzComPtrT& operator=(mzComPtrT const& other) {
        if (this != &other) mzComPtrT(other).swap(*this);
        return *this;
    }
    mzComPtrT& operator=(mzComPtrT&& other) noexcept {
        mzComPtrT(std::move(other)).swap(*this);
        return *this;
    }
    mzComPtrT& operator=(T* object) {
        mzComPtrT(object).swap(*this);
        return *this;
    }
    /// Keeps the object only when it supports `T`; empty otherwise.
    mzComPtrT& operator=(mzComPtrC const& source) {
        mzComPtrT(source).swap(*this);
        return *this;
    }

    /// Refers to `object` from now on, with a reference of its own, and gives
    /// up the object held before.
    void attach(T* object) { *this = object; }

    /// Releases the reference and empties the pointer. The count that
    /// `release` returned, 0 for an empty pointer.
    unsigned detach() {
        T* const held = std::exchange(object_, nullptr);
        return held ? held->release() : 0;
    }

    /// The raw pointer, without a new reference; null when empty.
    T* iface() const { return object_; }
    T* operator->() const { return object_; }
    bool isValid() const { return object_ != nullptr; }
    void swap(mzComPtrT& other) noexcept { std::swap(object_, other.object_); }

  private:
    void acquire() {
        if (object_) object_->addRef();
    }

    void query(mzIUnknown* source) {
        mzComPtrC found;
        if (source && source->queryInterface(T::interfaceId(), found) == mzSuccess) {
            object_ = static_cast<T*>(found.iface());
            acquire();
        }
    }

    T* object_ = nullptr;
};
