#include "host/parameters/LabelFamily.h"

#include <algorithm>
#include <span>

namespace Quorvan::Host {

namespace {

// Choices of the selectors, as bits.
constexpr uint32_t kClassic = 1, kTexture = 2, kBeat = 4;  // the granular mode
constexpr uint32_t kScan = 1, kFollow = 2;                 // the play head
constexpr uint32_t kOn = 2;                                // a switch
constexpr uint32_t kSynced = 2 | 4 | 8;                    // straight, triplet or dotted
constexpr uint32_t kComb = 8 | 16;                         // filter modes
constexpr uint32_t kPingPong = 2;

/// Full names in these rows stand without the prefix that they have in common.
struct ConditionRow {
    std::string_view selector;
    uint32_t choices = 0;
};
struct CaseRow {
    std::string_view member;
    ConditionRow first{}, second{};
};
struct FamilyRow {
    std::string_view label;
    std::span<const CaseRow> cases;
};

constexpr CaseRow kGrainSize[]{
    {"TextureSizeSynced", {"GranularMode", kTexture}, {"TextureSizeMidiSync", kOn}},
    {"TextureSizeAbsolute", {"GranularMode", kTexture}},
    {"GrainSizeRatio", {"GranularMode", kBeat}},
    {"GrainSizeRatio", {"DensitySizeLink", kOn}},
    {"GrainSizeSynced", {"GrainSizeMode", kSynced}},
    {"GrainSizeAbsolute"}};
constexpr CaseRow kTextureSize[]{{"TextureSizeSynced", {"TextureSizeMidiSync", kOn}},
                                 {"TextureSizeAbsolute"}};
constexpr CaseRow kDensity[]{
    {"TextureDensity", {"GranularMode", kTexture}},
    {"GranularPhaseHelper_RateUnSynced", {"GranularMode", kClassic}, {"DensityType", 1}},
    {"GranularPhaseHelper_RateSynced"}};
constexpr CaseRow kOffset[]{{"OffsetSynced", {"GranularMode", kBeat}},
                            {"OffsetSynced", {"OffsetType", kSynced}},
                            {"Offset"}};
constexpr CaseRow kPlayHead[]{{"OffsetSynced", {"PlaybackMode", kFollow}, {"GranularMode", kBeat}},
                              {"OffsetSynced", {"PlaybackMode", kFollow}, {"OffsetType", kSynced}},
                              {"Offset", {"PlaybackMode", kFollow}},
                              {"Speed", {"PlaybackMode", kScan}},
                              {"ManualScanPosition"}};
constexpr FamilyRow kGranular[]{{"Grain Size", kGrainSize},
                                {"Texture Size", kTextureSize},
                                {"Density", kDensity},
                                {"Play Head Offset", kOffset},
                                {"Play Head", kPlayHead}};

constexpr CaseRow kGeneratorRate[]{{"RateSynced", {"RateType", kSynced}}, {"RateUnSynced"}};
constexpr FamilyRow kGenerator[]{{"Rate", kGeneratorRate}};
constexpr CaseRow kFigureRate[]{{"Rate Synced", {"Rate Type", kSynced}}, {"Rate UnSynced"}};
constexpr FamilyRow kSpatializer[]{{"Rate", kFigureRate}};

constexpr CaseRow kFrequency[]{{"CombFreq", {"Mode", kComb}}, {"Freq"}};
constexpr FamilyRow kFilter[]{{"Frequency", kFrequency}};
constexpr CaseRow kDelayTime[]{{"DelayTimeSynced", {"RateType", kSynced}}, {"DelayTimeMs"}};
constexpr CaseRow kDelayWidth[]{{"StereoWidthPP", {"StereoMode", kPingPong}}, {"StereoWidth"}};
constexpr FamilyRow kDelay[]{{"Time", kDelayTime}, {"Width", kDelayWidth}};
constexpr CaseRow kOctaverTime[]{{"DelayTimeSynced", {"DelayTimeType", kSynced}}, {"DelayTimeMs"}};
constexpr FamilyRow kOctaver[]{{"Time", kOctaverTime}};
constexpr CaseRow kEchoTime[]{{"DelayTimeSynced", {"DelayTimeType", kSynced}}, {"DelayTime"}};
constexpr CaseRow kEchoWidth[]{{"StereoWidthPP", {"DelayType", kPingPong}}, {"StereoWidth"}};
constexpr FamilyRow kTapeEcho[]{{"Time", kEchoTime}, {"Width", kEchoWidth}};
constexpr CaseRow kChorusRate[]{{"RateSynced", {"MidiSync", kOn}}, {"Freq"}};
constexpr FamilyRow kChorus[]{{"Rate", kChorusRate}};
constexpr CaseRow kFlangerRate[]{{"RateSynced", {"RateType", kSynced}}, {"Freq"}};
constexpr FamilyRow kFlanger[]{{"Rate", kFlangerRate}};

class Builder {
public:
    using Find = std::function<std::optional<uint32_t>(std::string_view)>;
    explicit Builder(const Find& findName) : find(findName) {}

    void Add(const std::string& prefix, const std::string& group, std::span<const FamilyRow> rows) {
        for (const FamilyRow& row : rows) {
            LabelFamily& family = families.emplace_back();
            family.group = group;
            family.label = row.label;
            for (const CaseRow& oneCase : row.cases)
                family.cases.push_back(CaseOf(prefix, oneCase));
        }
    }

    std::vector<LabelFamily> families;

private:
    LabelFamily::Case CaseOf(const std::string& prefix, const CaseRow& row) const {
        LabelFamily::Case oneCase{IndexOf(prefix, row.member), {}};
        for (const ConditionRow& condition : {row.first, row.second})
            if (condition.choices != 0)
                oneCase.conditions.push_back(
                    {IndexOf(prefix, condition.selector), condition.choices});
        return oneCase;
    }
    uint32_t IndexOf(const std::string& prefix, std::string_view name) const {
        return find(prefix + std::string(name)).value();
    }

    const Find& find;
};

}  // namespace

bool LabelFamily::Holds(uint32_t index) const {
    return std::any_of(cases.begin(), cases.end(),
                       [&](const Case& oneCase) { return oneCase.member == index; });
}

std::vector<LabelFamily> BuildLabelFamilies(
    const std::function<std::optional<uint32_t>(std::string_view)>& find) {
    Builder builder(find);
    builder.Add("MoteWeaver_", "Granular", kGranular);
    for (const char* number : {"1", "2", "3"})
        builder.Add(std::string("Function") + number + "_", std::string("Function ") + number,
                    kGenerator);
    builder.Add("StepSeq_", "Step Sequencer", kGenerator);
    builder.Add("Spatializer ", "Spatializer", kSpatializer);
    for (const std::string slot : {"FX1", "FX2"}) {
        builder.Add(slot + "_MultiModeFilter_", slot + " Filter", kFilter);
        builder.Add(slot + "_Delay_", slot + " Delay", kDelay);
        builder.Add(slot + "_OctaverDelay_", slot + " Octaver", kOctaver);
        builder.Add(slot + "_TapeEcho_", slot + " Tape Echo", kTapeEcho);
        builder.Add(slot + "_Chorus_", slot + " Chorus", kChorus);
        builder.Add(slot + "_Flanger_Chorus_", slot + " Flanger", kFlanger);
    }
    return std::move(builder.families);
}

}  // namespace Quorvan::Host
