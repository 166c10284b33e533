#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/instrument/Instrument.h"
#include "host/instrument/PresetLibrary.h"

namespace Quorvan::Plugins {

/// Looks after an instrument in hosts that give a plug-in no thread of its own for slow work: takes
/// up what MIDI has taught, loads the presets that programs ask for, and measures the tail. Its
/// thread lives as long as it does and looks twenty times a second.
class Caretaker {
public:
    /// tell gets a sentence where a program can't be loaded, on the caretaker's thread.
    explicit Caretaker(Host::Instrument& caredFor,
                       std::function<void(const std::string&)> tell = {});
    ~Caretaker();
    Caretaker(const Caretaker&) = delete;
    Caretaker& operator=(const Caretaker&) = delete;

    /// Asks for a factory preset by its number; from any thread, waits for nothing. The last one
    /// asked for counts.
    void AskForFactoryPreset(uint32_t number) {
        wanted.store(static_cast<int32_t>(number), std::memory_order_relaxed);
    }

    /// What was asked for will not come any more once this has returned. Not on the audio thread.
    void ForgetFactoryPreset() {
        const std::lock_guard<std::mutex> lock(looking);
        wanted.store(-1, std::memory_order_relaxed);
    }

    /// As it was within the last half second; infinite where it may ring for ever. From any thread.
    double TailSeconds() const { return tail.load(std::memory_order_relaxed); }

private:
    void Look();
    void LoadProgram(uint32_t program);

    Host::Instrument& instrument;
    std::function<void(const std::string&)> tell;
    std::unique_ptr<Host::PresetLibrary> library;  ///< made at the first program change
    std::mutex looking;
    std::atomic<int32_t> wanted{-1};
    std::atomic<double> tail{0.0};
    unsigned looks = 0;
    std::atomic<bool> ends{false};
    std::thread thread;
};

}  // namespace Quorvan::Plugins
