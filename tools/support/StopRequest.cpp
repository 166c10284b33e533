#include "tools/support/StopRequest.h"

#include <atomic>
#include <csignal>

#include "tools/support/TemporaryFiles.h"

namespace Quorvan::Tools::StopRequest {

namespace {

std::atomic<int> asked{0};
static_assert(std::atomic<int>::is_always_lock_free, "a handler writes it");

extern "C" void Ask(int signal) {
    asked = signal;
    TemporaryFiles::InstallHandlers();
}

}  // namespace

void Install() {
    struct sigaction action {};
    action.sa_handler = Ask;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

int Signal() { return asked; }

}  // namespace Quorvan::Tools::StopRequest
