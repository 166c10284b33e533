#include "plugins/shared/Caretaker.h"

#include <chrono>
#include <limits>
#include <utility>

#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Plugins {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{50};
constexpr unsigned kLooksForATail = 10;

}  // namespace

Caretaker::Caretaker(Host::Instrument& caredFor, std::function<void(const std::string&)> teller)
    : instrument(caredFor), tell(std::move(teller)), thread([this] {
          while (!ends.load(std::memory_order_relaxed)) {
              Look();
              std::this_thread::sleep_for(kBetweenLooks);
          }
      }) {}

Caretaker::~Caretaker() {
    ends.store(true, std::memory_order_relaxed);
    thread.join();
}

void Caretaker::Look() {
    const std::lock_guard<std::mutex> lock(looking);
    const int32_t number = wanted.exchange(-1, std::memory_order_relaxed);
    const auto presets = Host::FactoryPresets();
    if (number >= 0 && static_cast<size_t>(number) < presets.size())
        if (const auto read =
                Host::ReadPreset(presets[static_cast<size_t>(number)].json, Host::SharedCatalog());
            read.value)
            instrument.LoadPreset(*read.value);
    if (const auto program = instrument.Poll())
        LoadProgram(*program);
    if (looks++ % kLooksForATail != 0)
        return;
    const Host::Tail now = instrument.GetTail();
    tail.store(now.endless ? std::numeric_limits<double>::infinity() : now.seconds,
               std::memory_order_relaxed);
}

void Caretaker::LoadProgram(uint32_t program) {
    if (library == nullptr)
        library = std::make_unique<Host::PresetLibrary>(
            Host::SharedCatalog(), Host::FactoryPresets(), Host::PresetLibrary::UsualFolder());
    const auto read = library->LoadProgram(program);
    if (read.value)
        instrument.LoadPreset(*read.value);
    else if (tell && !read.issues.empty())
        tell(read.issues.front().text);
}

}  // namespace Quorvan::Plugins
