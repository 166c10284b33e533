#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Subject of a one-operation observer list. Nobody owns anybody: an observer hangs itself into the
/// list with Attach, and the first of the two that goes away cuts the link.
///
/// Threads: attaching and detaching come between blocks, like parameter writes; observers are told
/// on the thread that writes.
template <class Subject>
class Observable {
public:
    /// Told of every parameter of the subject that changes, with its new position.
    class Observer {
    public:
        Observer() = default;
        Observer(const Observer&) = delete;
        Observer& operator=(const Observer&) = delete;
        virtual ~Observer() {
            if (subject != nullptr)
                subject->Detach(*this);
        }
        virtual void OnParameterChanged(uint32_t id, float normalised) = 0;

        /// Null where attached to nobody, or where the subject has gone.
        const Observable* Observed() const { return subject; }

    private:
        friend class Observable;
        Observable* subject = nullptr;
        Observer* next = nullptr;
    };

    Observable() = default;
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;
    ~Observable() {
        while (head != nullptr)
            Detach(*head);
    }

    /// Hangs observer into this list, out of the one it may hang in.
    void Attach(Observer& observer) {
        if (observer.subject != nullptr)
            observer.subject->Detach(observer);
        observer.subject = this;
        observer.next = head;
        head = &observer;
    }
    void Detach(Observer& observer) {
        for (Observer** link = &head; *link != nullptr; link = &(*link)->next) {
            if (*link != &observer)
                continue;
            *link = observer.next;
            observer.next = nullptr;
            observer.subject = nullptr;
            return;
        }
    }
    bool HasObservers() const { return head != nullptr; }
    void NotifyObservers(uint32_t id, float normalised) {
        for (Observer* observer = head; observer != nullptr;) {
            Observer* const following = observer->next;  // the one told may detach itself
            observer->OnParameterChanged(id, normalised);
            observer = following;
        }
    }

private:
    Observer* head = nullptr;
};

}  // namespace Quorvan::dsp
