#pragma once

#include <atomic>
#include <memory>

namespace Quorvan::Host {

/// Passes objects that one side makes to another that uses them and may not free memory: the newest
/// offer wins, and what it replaces comes back to be deleted by the maker.
///
/// Threads  Offer and Collect on the maker's side, calls in turn; Take and Current on the user's.
///          Nobody waits. The user's side takes a new object only where the last one it gave back
///          has been collected, so that both ways hold one object at most.
template <class T>
class HandOver {
public:
    HandOver() = default;
    explicit HandOver(std::unique_ptr<T> first) : current(first.release()) {}
    ~HandOver() {
        delete current;
        delete offered.load();
        delete returned.load();
    }
    HandOver(const HandOver&) = delete;
    HandOver& operator=(const HandOver&) = delete;

    void Offer(std::unique_ptr<T> object) {
        Collect();
        delete offered.exchange(object.release(), std::memory_order_acq_rel);
    }
    /// Deletes what the user has given back.
    void Collect() { delete returned.exchange(nullptr, std::memory_order_acquire); }

    /// True where a new object has become the current one.
    bool Take() {
        if (offered.load(std::memory_order_relaxed) == nullptr ||
            returned.load(std::memory_order_relaxed) != nullptr)
            return false;
        T* const fresh = offered.exchange(nullptr, std::memory_order_acquire);
        if (fresh == nullptr)
            return false;
        Replace(fresh);
        return true;
    }
    T* Current() const { return current; }

    /// User's side: whether what is given back now would find its place.
    bool CanReplace() const { return returned.load(std::memory_order_relaxed) == nullptr; }
    /// User's side, where CanReplace: makes an object of its own the current one.
    void Replace(T* fresh) {
        returned.store(current, std::memory_order_release);
        current = fresh;
    }

private:
    T* current = nullptr;  ///< the user's
    std::atomic<T*> offered{nullptr};
    std::atomic<T*> returned{nullptr};
};

}  // namespace Quorvan::Host
