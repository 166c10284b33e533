#pragma once

#include <algorithm>
#include <array>
#include <boost/container/small_vector.hpp>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "framework/Module.h"
#include "framework/Parameter.h"
#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

/// What a type must offer to stand in a container: it is a Module, and its class fixes how many ids
/// it takes in its parent's id space.
template <class M>
concept ContainerChildModule =
    std::derived_from<M, Module> && std::same_as<decltype(M::kParameterCount), const uint32_t>;

namespace details {

template <size_t I, class M>
struct ChildHolder {
    // Built from a tuple, never from another holder.
    template <class Arguments>  // NOLINTNEXTLINE(bugprone-forwarding-reference-overload)
    explicit ChildHolder(Arguments&& arguments)
        : module(std::make_from_tuple<M>(std::forward<Arguments>(arguments))) {}
    M module;
};

template <class Indices, class... M>
struct ChildHolders;

/// The children by value, each built in place from its own tuple of constructor arguments.
template <size_t... I, class... M>
struct ChildHolders<std::index_sequence<I...>, M...> : ChildHolder<I, M>... {
    template <class... Arguments>
    explicit ChildHolders(Arguments&&... arguments)
        : ChildHolder<I, M>(std::forward<Arguments>(arguments))... {}
};

/// Writes a physical value to a child. The modulation matrix keeps no parameter records and takes
/// amounts and switches instead.
template <class M>
void WriteChildValue(M& child, uint32_t id, float value) {
    if constexpr (requires { child.SetParameterValue(id, value); })
        child.SetParameterValue(id, value);
    else if (id < M::kFirstSwitchId)
        child.SetAmount(id, value);
    else
        child.SetActivated(id, value > 0.5f);
}

}  // namespace details

/// Size and rate that a container's children are set up with.
struct ChildSetup {
    float sampleRate;
    uint32_t blockSize;
};

/// Composite module: a fixed list of children held by value, parameters of its own, and one flat id
/// space over both, children first. What the children are fed with is the derived class's business:
/// its OnProcess runs them, each with a ProcessBlock of its own.
///
/// A link makes every write of an own parameter go on, as a position, to other ids.
template <ContainerChildModule... M>
class ModuleContainer : public Module {
public:
    static constexpr size_t kChildCount = sizeof...(M);
    /// Offset of each child in the id space, and behind them the first own id.
    static constexpr std::array<uint32_t, kChildCount + 1> kOffsets = [] {
        std::array<uint32_t, kChildCount + 1> offsets{};
        size_t k = 0;
        ((offsets[k + 1] = offsets[k] + M::kParameterCount, ++k), ...);
        return offsets;
    }();
    static constexpr uint32_t kFirstOwnId = kOffsets[kChildCount];

    /// childArguments: for each child a tuple of its constructor arguments.
    template <class... ChildArguments>
    ModuleContainer(std::string moduleName, uint32_t inputs, uint32_t outputs,
                    const ParameterTable& ownParameters, ChildArguments&&... childArguments)
        : Module(std::move(moduleName), inputs, outputs),
          children(std::forward<ChildArguments>(childArguments)...) {
        static_assert(sizeof...(ChildArguments) == kChildCount, "one argument tuple a child");
        AppendParameters(ownParameters);
    }

    void Setup(float sampleRate, uint32_t blockSize) override {
        const ChildSetup setup = GetChildSetup(sampleRate, blockSize);
        ForEachChild([&](auto& child) { child.Setup(setup.sampleRate, setup.blockSize); });
        Module::Setup(sampleRate, blockSize);
        MarkAllChanged();
    }

    void Terminate() override {
        ForEachChild([](auto& child) { child.Terminate(); });
        OnTerminate();
    }

    void Reset(bool hard) override {
        ForEachChild([hard](auto& child) { child.Reset(hard); });
        Module::Reset(hard);
        if (hard)
            MarkAllChanged();
    }

    bool SetParameterNormalized(uint32_t id, float position) override {
        if (!IsOwn(id)) {
            WithChild(id, [position](auto& child, uint32_t local) {
                child.SetParameterNormalized(local, position);
            });
            return true;
        }
        const uint32_t own = id - kFirstOwnId;
        changed[own] = parameters[own].WriteNormalized(position, changed[own] != 0);
        for (const uint32_t linked : links[own])
            SetParameterNormalized(linked, position);
        return true;
    }

    float GetParameterNormalized(uint32_t id) override {
        if (IsOwn(id))
            return parameters[id - kFirstOwnId].GetNormalized();
        float position = 0.0f;
        WithChild(id, [&position](auto& child, uint32_t local) {
            position = child.GetParameterNormalized(local);
        });
        return position;
    }

    void GetParameterName(uint32_t id, ParameterNameSink& out) override {
        if (IsOwn(id)) {
            AppendPath(out);
            out.Append(parameters[id - kFirstOwnId].name);
            return;
        }
        WithChild(id, [this, &out](auto& child, uint32_t local) {
            AppendPath(out);
            child.GetParameterName(local, out);
        });
    }

    bool Process(ProcessBlock& block) override {
        if (!UpdateParameters(block))
            return false;
        bool result = false;
        if (ChannelsFit(block)) {
            result = OnProcess(block);
            needsFullUpdate = false;
        }
        ClearChanged();
        return result;
    }

    virtual bool SetParameterValue(uint32_t id, float value) {
        if (!IsOwn(id)) {
            WithChild(id, [value](auto& child, uint32_t local) {
                details::WriteChildValue(child, local, value);
            });
            return true;
        }
        const uint32_t own = id - kFirstOwnId;
        changed[own] = parameters[own].WriteValue(value, changed[own] != 0);
        const float position = parameters[own].GetNormalized();
        for (const uint32_t linked : links[own])
            SetParameterNormalized(linked, position);
        return true;
    }
    virtual void OnTerminate() {}
    virtual bool UpdateParameters(ProcessBlock& block) = 0;
    virtual ChildSetup GetChildSetup(float sampleRate, uint32_t blockSize) {
        return {sampleRate, blockSize};
    }

    /// The record behind an id of this container's id space, at any depth; null where there is
    /// none, as in the modulation matrix.
    Parameter* FindRecord(uint32_t id) {
        if (IsOwn(id))
            return &ParameterAt(id);
        Parameter* found = nullptr;
        WithChild(id, [&found](auto& child, uint32_t local) {
            if constexpr (requires { child.FindRecord(local); })
                found = child.FindRecord(local);
        });
        return found;
    }
    /// The record of an own parameter, by its id in this container's id space.
    Parameter& ParameterAt(uint32_t id) { return parameters[id - kFirstOwnId]; }
    float Value(uint32_t id) { return ParameterAt(id).GetValue(); }
    float Position(uint32_t id) { return ParameterAt(id).GetNormalized(); }
    /// The physical value truncated to an index.
    int32_t Index(uint32_t id) { return static_cast<int32_t>(Value(id)); }
    bool IsChanged(uint32_t id) const { return changed[id - kFirstOwnId] != 0; }
    void MarkChanged(uint32_t id) { changed[id - kFirstOwnId] = 1; }
    void MarkAllChanged() { std::fill(changed.begin(), changed.end(), uint8_t{1}); }
    void ClearChanged() { std::fill(changed.begin(), changed.end(), uint8_t{0}); }
    uint32_t OwnParameterCount() const { return static_cast<uint32_t>(parameters.size()); }
    /// Gives an own parameter a new form and range at its minimum (constructors), and marks it.
    void Configure(uint32_t id, uint32_t kind, float min, float max, float x = 0.5f) {
        ParameterAt(id).Configure(kind, min, max, x);
        MarkChanged(id);
    }
    void ConfigureStepped(uint32_t id, uint32_t count, float first = 0.0f, float step = 1.0f) {
        ParameterAt(id).ConfigureStepped(count, first, step);
        MarkChanged(id);
    }

    template <size_t I>
    auto& Child() {
        using Type = std::tuple_element_t<I, std::tuple<M...>>;
        return static_cast<details::ChildHolder<I, Type>&>(children).module;
    }

protected:
    /// Grows the list of own parameters; for constructors only.
    void AppendParameters(const ParameterTable& table) {
        for (const ParameterSpec& row : table)
            parameters.push_back(row.Make());
        links.resize(parameters.size());
        changed.resize(parameters.size(), 1);
    }

    /// From now on writes of own parameter id go on to linked as well; for constructors only.
    void Link(uint32_t id, uint32_t linked) { links[id - kFirstOwnId].push_back(linked); }

    template <class Visit>
    void ForEachChild(Visit&& visit) {
        ForEachIndexed(visit, std::index_sequence_for<M...>{});
    }

private:
    bool IsOwn(uint32_t id) const {
        return id >= kFirstOwnId && id - kFirstOwnId < parameters.size();
    }

    template <class Visit, size_t... I>
    void ForEachIndexed(Visit& visit, std::index_sequence<I...>) {
        (visit(Child<I>()), ...);
    }

    /// Calls visit(child, local id) on the one child whose range holds id, if any does.
    template <class Visit>
    void WithChild(uint32_t id, Visit&& visit) {
        WithIndexed(id, visit, std::index_sequence_for<M...>{});
    }
    template <class Visit, size_t... I>
    void WithIndexed(uint32_t id, Visit& visit, std::index_sequence<I...>) {
        const auto tryChild = [&]<size_t K>(std::integral_constant<size_t, K>) {
            if (id < kOffsets[K] || id >= kOffsets[K + 1])
                return false;
            visit(Child<K>(), id - kOffsets[K]);
            return true;
        };
        (tryChild(std::integral_constant<size_t, I>{}) || ...);
    }

protected:
    details::ChildHolders<std::index_sequence_for<M...>, M...> children;
    std::vector<Parameter> parameters;  ///< own parameters
    std::vector<boost::container::small_vector<uint32_t, 4>> links;
    std::vector<uint8_t> changed;
};

}  // namespace Quorvan::dsp
