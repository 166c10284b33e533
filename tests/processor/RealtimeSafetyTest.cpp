// What the audio path must not do: allocate, lock, call the system, leave the caller's mode
// changed.
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "processor/DenormalGuard.h"
#include "support/AllocationTrap.h"
#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

/// Blocks over everything that a host can set while it plays: writes in every block, transport
/// starts, stops and jumps, tempo changes. The loop itself allocates nothing.
class HardLife {
public:
    HardLife() : input(rig.blockSize), output(rig.blockSize), random(3) {
        rig.MakeAudible().Set("GUI Visible", 1.0f);
        rig.EndPresetLoad();
        rig.RunSilence(2);
        data.inputs = inputs.data();
        data.outputs = outputs.data();
        data.inputCount = data.outputCount = 2;
        data.frameCount = rig.blockSize;
    }
    void Run(uint32_t blocks) {
        for (uint32_t k = 0; k < blocks; ++k) {
            for (float& sample : input)
                sample = static_cast<float>(random()) / 4.3e9f - 0.5f;
            for (int w = 0; w < 5; ++w) {
                const auto index = static_cast<uint32_t>(random() % 3150);
                // A bypass or a held panic would leave little to look at.
                if (index < 3015 || index >= 3020)
                    rig.processor->SetParameter(index, static_cast<float>(random()) / 4.3e9f);
            }
            data.tempo = 60.0f + static_cast<float>(random() % 120);
            data.transportPlaying = k / 100 % 2;
            data.songPosition = static_cast<float>(random() % 4 == 0 ? random() % 64 : k / 500);
            rig.processor->Process(&data);
            const ParameterChange* changes = nullptr;
            const BlobChange* blobs = nullptr;
            int32_t count = 0;
            rig.processor->GetParameterChanges(&changes, &count);
            rig.processor->GetBlobChanges(&blobs, &count);
        }
    }

private:
    ProcessorRig rig;
    Channel input, output;
    std::array<float*, 2> inputs{input.data(), input.data()};
    std::array<float*, 2> outputs{output.data(), output.data()};
    std::mt19937 random;
    ProcessData data{};
};

TEST(RealtimeSafetyTest, NothingIsAllocatedAfterSetup) {
    HardLife life;
    const AllocationTrap trap;
    life.Run(4000);
    EXPECT_EQ(trap.caught, 0u);
    int* const volatile taken = new int(3);  // the trap is set, and the pair not optimised away
    delete taken;
    EXPECT_EQ(trap.caught, 2u);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(RealtimeSafetyTest, NoSystemCallIsMade) {
    // In strict mode the kernel ends the process at any call but read, write and exit: that covers
    // locks that wait, memory from the system, files and clocks.
    HardLife life;
    life.Run(10);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);
        life.Run(3000);
        syscall(SYS_exit, 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
}
#endif

TEST(RealtimeSafetyTest, DenormalsAreFlushedAndTheCallersModeComesBack) {
    volatile float tiny = 1e-30f;
    const auto product = [&tiny] { return tiny * 1e-10f; };
    EXPECT_NE(product(), 0.0f);
    {
        const DenormalGuard guard;
        EXPECT_EQ(product(), 0.0f);
    }
    EXPECT_NE(product(), 0.0f);
    ProcessorRig rig;
    rig.RunSilence(3);
    EXPECT_NE(product(), 0.0f);
}

TEST(RealtimeSafetyTest, ProcessorsMadeOnManyThreadsAtOnceKeepTheirSeeds) {
    const auto sound = [](uint64_t seed) {
        ProcessorRig rig(48000.0f, seed);
        rig.MakeAudible().SetAll("MoteWeaver_RandomPitch=0.5;MoteWeaver_Spray=0.5");
        return rig.Run(NoisePair(rig.blockSize * 200));
    };
    std::array<Stereo, 4> together;
    std::vector<std::thread> threads;
    for (size_t i = 0; i < together.size(); ++i)
        threads.emplace_back([&, i] { together[i] = sound(i + 1); });
    for (std::thread& thread : threads)
        thread.join();
    for (size_t i = 0; i < together.size(); ++i)
        EXPECT_EQ(together[i], sound(i + 1)) << i;
    EXPECT_NE(together[0], together[1]);
}

TEST(RealtimeSafetyTest, AReaderOfTheDisplayNeverMeetsAWriter) {
    // The reader takes the lock by one exchange, as a user interface does, and walks both vectors.
    ProcessorRig rig;
    rig.MakeAudible().Set("MoteWeaver_PlaybackQuantizationMode", 1.0f);
    rig.RunSilence(1);
    const Display record = rig.ReadDisplay();
    std::atomic<bool> done{false};
    std::atomic<uint64_t> reads{0};
    std::thread reader([&] {
        while (!done) {
            if (record.lock->exchange(1) != 0)
                continue;
            uint64_t sum = 0;
            for (const auto* vector : {record.grains, record.markers})
                for (const uint32_t place : *vector)
                    sum += place;
            record.lock->store(0);
            reads += sum > 0 ? 1 : 0;
        }
    });
    const Channel noise = Noise(1, rig.blockSize * 2000, 0.3f);
    rig.Run({noise, noise});
    while (reads == 0)  // or the test would show nothing
        std::this_thread::yield();
    done = true;
    reader.join();
}

}  // namespace
}  // namespace Quorvan::Processor
