// What Engine::Process and the operations around it must not do: allocate.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "host/HostRig.h"
#include "host/engine/Engine.h"
#include "host/parameters/ShellIndex.h"

namespace {

thread_local bool counting = false;
thread_local uint64_t allocations = 0;

void* Allocate(size_t size, size_t alignment) {
    allocations += counting ? 1 : 0;
    void* const memory =
        std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(size_t size) { return Allocate(size, alignof(std::max_align_t)); }
void* operator new(size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, size_t, std::align_val_t) noexcept { std::free(memory); }

namespace Quorvan::Host {
namespace {

using namespace test;

TEST(AudioPathTest, RunningAllocatesNothing) {
    Engine engine(1);
    engine.Prepare({.sideChainInputs = 2});
    engine.Restore(AudibleSettings());
    EngineListener listener;
    engine.AddListener(listener);
    engine.Write(kGuiVisibleIndex, 1.0f);
    const Signal input = Noise(1, 1000);
    Signal output(1000);
    const std::array<const float*, 2> in{input.data(), input.data()};
    const std::array<float*, 2> out{output.data(), output.data()};
    counting = true;
    for (uint32_t i = 0; i < 60; ++i) {
        engine.SetTransport({.tempo = 100.0 + i, .beat = i * 0.9, .playing = i % 5 != 0});
        for (uint32_t write = 0; write < 20; ++write)
            engine.WriteAt(engine.FramesIn() + 997 * write % 1500, 11 * write,
                           static_cast<float>(write) / 20.0f);
        if (i % 20 == 7)
            engine.Panic();
        engine.Process({.inputs = in.data(), .outputs = out.data(), .frames = 1 + 16 * i});
    }
    counting = false;
    EXPECT_EQ(allocations, 0u);
    EXPECT_EQ(engine.Counts().refusedWrites, 0u);
    EXPECT_GT(engine.Counts().blocks, 500u);
}

}  // namespace
}  // namespace Quorvan::Host
