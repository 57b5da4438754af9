#include "host/memory.h"

#include <QtGlobal>

void* PMemManager::operator new(std::size_t size) {
    if (void* const storage = qMalloc(size)) return storage;
    throw std::bad_alloc();
}

void* PMemManager::operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return qMalloc(size);
}

void PMemManager::operator delete(void* storage) noexcept {
    qFree(storage);
}

void PMemManager::operator delete(void* storage, std::nothrow_t const&) noexcept {
    qFree(storage);
}
