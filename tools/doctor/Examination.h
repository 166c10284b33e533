#pragma once

#include <string>
#include <vector>

#include "host/parameters/ParameterCatalog.h"
#include "tools/doctor/TestFolder.h"
#include "tools/render/Summary.h"

namespace Quorvan::Tools {

/// The checks of the doctor. Each answers with the empty text, or with a sentence that says what is
/// wrong. They work in a folder of their own, which goes with the object.
class Examination {
public:
    struct Check {
        std::string name;  ///< what is shown of it
        std::string (Examination::*run)();
    };

    Examination();

    const std::vector<Check>& Checks() const { return checks; }
    /// Runs a check; whatever it throws becomes a fault.
    std::string Try(const Check& check);

private:
    std::string CheckPresets();
    std::string CheckSoundFiles();
    std::string CheckResampler();
    std::string CheckDryPath();
    std::string CheckGrains();
    std::string CheckRepeat();
    std::string CheckPicture();

    std::string WriteTone(const std::string& name, double rate, const std::string& format);
    Summary Render(const std::string& input, const std::string& output,
                   const std::vector<std::string>& assignments, bool picture);

    std::vector<Check> checks;
    Host::ParameterCatalog catalog;
    TestFolder folder;
};

}  // namespace Quorvan::Tools
