#include "tools/commands/DoctorCommand.h"

#include <iostream>

#include "tools/doctor/Examination.h"

namespace Quorvan::Tools {

DoctorCommand::DoctorCommand(CLI::App& program)
    : Command(program, "doctor", "Render a test tone and say whether the installation is sound") {}

ExitCode DoctorCommand::Run() {
    Examination examination;
    size_t faults = 0;
    for (const Examination::Check& check : examination.Checks()) {
        const std::string fault = examination.Try(check);
        std::cout << (fault.empty() ? "  ok     " : "  FAULT  ") << check.name << "\n";
        if (!fault.empty()) {
            std::cout << "         " << fault << "\n";
            ++faults;
        }
    }
    if (faults == 0) {
        std::cout << "The installation is sound.\n";
        return ExitCode::Success;
    }
    std::cout << "The installation is not sound: " << faults << (faults == 1 ? " check" : " checks")
              << " failed. Install the packages that script/setup names, and build again.\n";
    return ExitCode::Unsound;
}

}  // namespace Quorvan::Tools
