#include "host/instrument/MidiClock.h"
#include "instrument/InstrumentRig.h"

namespace Quorvan::Host {
namespace {

using Kind = MidiSource::Kind;

InstrumentEvent Turn(int number, int value) { return Midi(0, 0xb0, number, value); }

TEST(MidiTest, EachKindOfSourceIsLearntFromItsFirstMessagesAndMovesItsParameter) {
    struct Case {
        std::vector<InstrumentEvent> learns, moves;
        MidiSource source;
        float position;
    };
    const Case cases[]{
        {{Midi(0, 0xb2, 74, 10)}, {Midi(0, 0xb2, 74, 127)}, {Kind::Controller, 2, 74}, 1.0f},
        {{Turn(7, 10), Turn(7, 11)}, {Turn(7, 0)}, {Kind::Controller, 0, 7}, 0.0f},
        {{Turn(7, 10), Turn(39, 1)},
         {Turn(7, 64), Turn(39, 1)},
         {Kind::FineController, 0, 7},
         8193.0f / 16383.0f},
        {{Turn(99, 2), Turn(98, 3), Turn(6, 1)},
         {Turn(6, 127), Turn(38, 127)},
         {Kind::Nrpn, 0, 259},
         1.0f},
        {{Midi(0, 0xe5, 1, 1)}, {Midi(0, 0xe5, 0, 64)}, {Kind::PitchBend, 5, 0}, 0.5f},
        {{Midi(0, 0xd0, 3)}, {Midi(0, 0xd0, 127)}, {Kind::Pressure, 0, 0}, 1.0f},
        {{Midi(0, 0x80, 60), Midi(0, 0x90, 60, 90)},
         {Midi(0, 0x90, 60, 90), Midi(0, 0x90, 60, 0)},
         {Kind::Note, 0, 60},
         1.0f}};
    for (const Case& one : cases) {
        SCOPED_TRACE(SourceText(one.source));
        ReadyInstrument instrument("Feedback=@0.3;");
        const uint32_t feedback = IndexOf("Feedback");
        instrument.LearnMidi(kDisplayIndex);
        EXPECT_EQ(instrument.LearningMidi(), kUnassigned);
        instrument.LearnMidi(feedback);
        instrument.Flush({Turn(123, 0)});  // all notes off is no knob, nor is a step
        instrument.Flush({Turn(99, 2), Turn(98, 3), Turn(96, 1), Turn(99, 127), Turn(98, 127)});
        instrument.Flush(one.learns);
        EXPECT_EQ(instrument.Position(feedback), 0.3f);
        instrument.Poll();
        ASSERT_EQ(instrument.GetMidiMap().size(), 1u);
        EXPECT_EQ(instrument.GetMidiMap()[0].source, one.source);
        EXPECT_EQ(instrument.LearningMidi(), kUnassigned);
        instrument.Flush(one.moves);
        EXPECT_FLOAT_EQ(instrument.Position(feedback), one.position);
        EXPECT_EQ(instrument.sink.moves.back().first, 2u);
        const MidiMap map = instrument.GetMidiMap();
        EXPECT_EQ(ReadMidiMap(WriteMidiMap(map, Catalog()), Catalog()).value, map);
    }
}

TEST(MidiTest, RangesCurvesAndPickUp) {
    MidiBinding binding{{Kind::Controller, 0, 1}, IndexOf("Feedback"), 0.8f, 0.2f, 1.0f};
    EXPECT_FLOAT_EQ(binding.PositionOf(0.0f), 0.8f);
    EXPECT_FLOAT_EQ(binding.PositionOf(0.5f), 0.8f - 0.6f * 0.125f);
    EXPECT_FLOAT_EQ(binding.PositionOf(1.0f), 0.2f);

    ReadyInstrument instrument("Feedback=@0.5;");
    instrument.SetMidiMap(
        {{{Kind::Controller, 0, 1}, binding.index, 0.0f, 1.0f, 0.0f, MidiBinding::Take::PickUp}});
    const auto turn = [&](int value) {
        instrument.Flush({Turn(1, value)});
        return instrument.Position(binding.index);
    };
    EXPECT_EQ(turn(10), 0.5f);
    EXPECT_EQ(turn(40), 0.5f);
    EXPECT_FLOAT_EQ(turn(80), 80.0f / 127.0f);  // past it
    instrument.Edit(binding.index, 0.1f);
    EXPECT_EQ(turn(90), 0.1f);
    EXPECT_FLOAT_EQ(turn(13), 13.0f / 127.0f);  // near it
    // A note switches, however soft; fine values do not tremble.
    const uint32_t freeze = IndexOf("MoteWeaver_BufferFreeze");
    MidiBinding note{{Kind::Note, 0, 60}, freeze};
    for (const auto take : {MidiBinding::Take::Jump, MidiBinding::Take::Toggle}) {
        note.take = take;
        instrument.SetMidiMap({note, {{Kind::Nrpn, 0, 259}, binding.index}});
        instrument.Flush({Midi(0, 0x90, 60, 1), Midi(0, 0x90, 60, 0)});
        EXPECT_EQ(instrument.Position(freeze), take == MidiBinding::Take::Jump ? 0.0f : 1.0f);
    }
    instrument.Flush({Turn(99, 2), Turn(98, 3), Turn(6, 64)});
    instrument.sink.moves.clear();
    instrument.Flush({Turn(6, 65), Turn(38, 9), Turn(6, 65)});
    EXPECT_EQ(instrument.sink.moves, decltype(instrument.sink.moves)(2, {2, 8329.0f / 16383.0f}));
}

TEST(MidiTest, WhatIsLearntAnewKeepsItsRangeAndOneKnobOneParameter) {
    ReadyInstrument instrument;
    const uint32_t feedback = IndexOf("Feedback"), wet = IndexOf("Dry / Wet");
    MidiBinding hand{{Kind::Controller, 0, 74}, feedback, 0.2f, 0.5f, 0.3f,
                     MidiBinding::Take::PickUp, "{}"};
    instrument.SetMidiMap({hand});
    const auto learn = [&](uint32_t index, const std::vector<InstrumentEvent>& events) {
        const uint32_t before = instrument.Changes();
        instrument.LearnMidi(index, index == feedback);
        instrument.Flush(events);
        instrument.Poll();
        EXPECT_NE(instrument.Changes(), before);
    };
    learn(feedback, {Turn(7, 10), Turn(7, 11)});
    hand.source.number = 7;
    EXPECT_EQ(instrument.GetMidiMap(), MidiMap({hand}));
    learn(wet, {Turn(7, 10), Turn(39, 1)});
    learn(feedback, {Turn(7, 12), Turn(39, 2), Turn(75, 9)});  // the first knob is still turned
    ASSERT_EQ(instrument.GetMidiMap().size(), 2u);
    EXPECT_EQ(instrument.GetMidiMap()[0].index, wet);
}

TEST(MidiTest, ClockAndStartDriveTheSongWhereTheHostHasNone) {
    ReadyInstrument instrument;
    std::vector<InstrumentEvent> events;
    // 150 beats per minute at 44100 Hz: a tick each 735 frames, from the second beat on started.
    for (uint32_t tick = 0; tick < 72; ++tick) {
        if (tick == 48)
            events.push_back(Midi(tick * 735 - 10, 0xfa));
        events.push_back(Midi(tick * 735 + tick % 3, 0xf8));
    }
    instrument.Run(Silence(72 * 735), events);
    EXPECT_DOUBLE_EQ(instrument.Place().tempo, 150.0);
    EXPECT_TRUE(instrument.Place().playing);
    EXPECT_NEAR(instrument.Place().beat, 1.0, 0.001);
    instrument.Flush({Midi(0, 0xfc), Midi(0, 0xc0, 12)});
    EXPECT_FALSE(instrument.Place().playing);
    EXPECT_EQ(instrument.Poll(), 12u);
    EXPECT_EQ(instrument.Poll(), std::nullopt);

    instrument.Run(Silence(50000));  // the clock is gone
    instrument.Song().SetTempo(90.0);
    instrument.Song().Run(true);
    instrument.Song().Rewind();
    instrument.Run(Silence(44100));
    EXPECT_DOUBLE_EQ(instrument.Place().tempo, 90.0);
    EXPECT_NEAR(instrument.Place().beat, 1.5, 0.001);
    // It is back, and the pause is no part of its tempo.
    instrument.Run(Silence(1500),
                   {Midi(0, 0xfa), Midi(0, 0xf8), Midi(735, 0xf8), Midi(1470, 0xf8)});
    EXPECT_DOUBLE_EQ(instrument.Place().tempo, 150.0);
    TapTempo tap;
    EXPECT_TRUE(!tap.Tap(1.0) && tap.Tap(1.5) && tap.Tap(2.0) == 120.0);
}

TEST(MidiTest, TheSongStaysWithATremblingClockForTenMinutes) {
    std::mt19937 random(1);
    for (const auto& [tempo, buffer] :
         {std::pair(93.75, 1u), {120.006, 1u}, {299.0, 1u}, {120.0, 256u}}) {
        MidiClock clock;
        clock.Prepare(44100.0);
        clock.Hear({0xfa}, 0);
        std::map<double, Transport> tempos;  // by frames
        for (int tick = 0; tick < 240.0 * tempo; ++tick) {
            const double due = tick * 110250.0 / tempo;
            auto heard = static_cast<uint64_t>(due + static_cast<double>(random() % 44));
            heard -= heard % buffer;  // of a sender that tells the buffer only
            const auto place = clock.Hear({0xf8}, heard);
            if (place && (tempos.empty() || place->tempo != tempos.rbegin()->second.tempo))
                tempos[static_cast<double>(heard)] = *place;
            const auto& [since, song] = *tempos.rbegin();
            ASSERT_NEAR(24.0 * song.beat + (due - since) * song.tempo / 110250.0, tick,
                        tick > 48 ? 0.25 : 20.0);
        }
        EXPECT_NEAR(tempos.rbegin()->second.tempo, tempo, 0.001);
        EXPECT_LE(tempos.size(), 6u);
    }
}

}  // namespace
}  // namespace Quorvan::Host
