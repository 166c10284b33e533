#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/instrument/DefaultMidiMap.h"
#include "host/parameters/ModulationNames.h"
#include "instrument/InstrumentRig.h"
#include "plugins/ui/Face.h"
#include "plugins/ui/FaceCore.h"
#include "plugins/ui/widgets/BarEditor.h"
#include "plugins/ui/widgets/CurveEditor.h"
#include "plugins/ui/widgets/Knob.h"
#include "plugins/ui/widgets/MatrixView.h"
#include "plugins/ui/widgets/RoadView.h"
#include "plugins/ui/widgets/SourceTile.h"
#include "plugins/ui/widgets/TapeView.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Ui {
namespace {

/// A face on a picture, with an instrument that plays; its user knows widgets by their names.
class FaceTest : public testing::Test {
protected:
    FaceTest()
        : presets(test::Catalog(), Host::FactoryPresets(),
                  std::filesystem::path(testing::TempDir()) / "face"),
          face(instrument, presets) {
        Resize(1.0);
        Play();
    }
    ~FaceTest() override { cairo_surface_destroy(surface); }

    void Resize(double scale) {
        const int width = static_cast<int>(1280 * scale), height = static_cast<int>(800 * scale);
        cairo_surface_destroy(surface);
        surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
        face.Resize(width, height);
    }
    void Play() { instrument.Run(test::NoiseInput(4800)); }
    /// One picture; answers what was drawn anew.
    std::vector<Rect> Picture() {
        cairo_t* const context = cairo_create(surface);
        const std::vector<Rect> rects = face.Idle(now += 0.02);
        for (const Rect& rect : rects)
            face.Draw(context, rect);
        cairo_destroy(context);
        return rects;
    }
    template <class Kind = Widget>
    Kind* Find(const std::string& name) {
        for (Widget* const widget : face.Shown())
            if (auto* const kind = dynamic_cast<Kind*>(widget)) {
                const Control* const control = kind->ControlAt(kind->box.Centre());
                if ((control ? control->Name() : kind->TipTitle({})) == name)
                    return kind;
            }
        ADD_FAILURE() << "no " << name << " is shown";
        return nullptr;
    }
    PointerEvent At(Point at, bool shift = false) {
        PointerEvent event{{at.x * face.Scale(), at.y * face.Scale()}, Button::Left, {}, now};
        event.modifiers.shift = shift;
        return event;
    }
    void Drag(Point from, double dx, double dy, bool shift = false) {
        now += 1.0;
        face.Press(At(from, shift));
        face.Move(At({from.x + dx, from.y + dy}, shift));
        face.Release(At({from.x + dx, from.y + dy}, shift));
    }
    void Drag(const std::string& name, double dx, double dy, bool shift = false) {
        Drag(Find(name)->box.Centre(), dx, dy, shift);
    }
    void Click(Point at, int times = 1) {
        now += 1.0;
        for (int i = 0; i < times; ++i) {
            face.Press(At(at));
            face.Release(At(at));
        }
    }
    /// Clicks on what begins so in the menu that is open, with the right button on a control
    /// before.
    void Choose(const std::string& begins, const char* control = nullptr) {
        if (control != nullptr) {
            PointerEvent event = At(Find(control)->box.Centre());
            event.button = Button::Right;
            face.Press(event);
        }
        std::vector<PlacedText> texts;
        face.NoteTexts(&texts);
        Picture();
        face.NoteTexts(nullptr);
        const auto found = std::find_if(texts.rbegin(), texts.rend(), [&](const PlacedText& text) {
            return text.text.starts_with(begins);
        });
        ASSERT_NE(found, texts.rend()) << begins;
        Click(found->box.Centre());
    }
    void Type(const char* text) {
        face.Text(text);
        face.Key({Key::Enter, 0, {}});
    }
    float Position(const char* name) { return instrument.Position(*face.Model().Find(name)); }
    void Put(const char* name, const char* text) {
        EXPECT_EQ(face.Model().Type(*face.Model().Find(name), text), "");
        Picture();
    }

    test::ReadyInstrument instrument;
    Host::PresetLibrary presets;
    FaceCore face;
    cairo_surface_t* surface = nullptr;
    double now = 0.0;
};

TEST_F(FaceTest, GesturesMoveWhatTheyHoldByTheRightAmount) {
    Put("Persistence", "@0.5");
    Drag("Persistence", 0.0, -40.0);
    EXPECT_NEAR(Position("Persistence"), 0.7f, 1e-4f);
    Drag("Persistence", 0.0, 40.0, true);
    EXPECT_NEAR(Position("Persistence"), 0.68f, 1e-4f);
    face.Wheel({Find("Persistence")->box.Centre(), 2.0, {}});
    EXPECT_NEAR(Position("Persistence"), 0.72f, 1e-4f);
    for (int i = 0; i < 3; ++i)
        instrument.Undo();
    EXPECT_FLOAT_EQ(Position("Persistence"), 0.5f);
    // The default is a new plug-in's, not a new processor's.
    Put("Pitch", "5 st");
    Click(Find("Pitch")->box.Centre(), 2);
    EXPECT_NEAR(face.Model().ValueOf("Pitch"), 0.0, 1e-3);
}

TEST_F(FaceTest, ADragIsOneStepAndOneGestureForTheHost) {
    const float before = Position("Dry / Wet");
    Drag("Dry / Wet", 0.0, before > 0.5f ? 30.0 : -30.0);
    EXPECT_NE(Position("Dry / Wet"), before);
    Play();
    EXPECT_EQ(instrument.sink.begun, 1);
    EXPECT_EQ(instrument.sink.ended, 1);
    face.Key({Key::Letter, 'z', {.control = true}});
    EXPECT_FLOAT_EQ(Position("Dry / Wet"), before);
    // A menu ends what the pointer holds. Of what is no host control, hosts hear that it is dirty.
    face.Press(At(Find("Dry / Wet")->box.Centre()));
    face.Key({Key::Menu, 0, {}});
    Play();
    EXPECT_EQ(instrument.sink.ended, 2);
    face.Key({Key::Escape, 0, {}});
    const uint32_t changes = instrument.Changes();
    Drag("Distance", 0.0, -30.0);
    EXPECT_GT(instrument.Changes(), changes);
}

TEST_F(FaceTest, TypedValuesAreReadAndRefused) {
    Click(Find("Grain Size")->box.Centre());
    face.Key({Key::Enter, 0, {}});
    Type("never");
    EXPECT_TRUE(face.IsTyping());
    face.Key({Key::Letter, 'a', {.control = true}});
    face.Key({Key::Other, 0, {}});  // as that of "1", which windows tell of ahead of its sign
    Type("120 ms");
    EXPECT_FALSE(face.IsTyping());
    EXPECT_NEAR(face.Model().ValueOf("Grain Size"), 120.0, 0.5);
}

TEST_F(FaceTest, ACurveTakesNewPointsAndMovesThem) {
    Click(Find<SourceTile>("Function 1")->box.Centre());
    Picture();
    const Rect box = Find<CurveEditor>("Curve")->box.Inset(8.0);
    const double points = face.Model().ValueOf("Function 1 Last Point");
    const Point fresh{box.x + 0.25 * box.width, box.y + 0.2 * box.height};
    Click(fresh, 2);
    EXPECT_EQ(face.Model().ValueOf("Function 1 Last Point"), points + 1.0);
    EXPECT_NEAR(Position("Function1_PointX3"), 0.25f, 0.01f);
    EXPECT_NEAR(Position("Function1_PointY3"), 0.8f, 0.01f);
    Drag(fresh, 0.0, 0.4 * box.height);
    EXPECT_NEAR(Position("Function1_PointY3"), 0.4f, 0.01f);
    Type("50");  // the height of the point that keys work on, which was clicked last
    EXPECT_NEAR(Position("Function1_PointY3"), 0.5f, 1e-4f);
    Click(Find("Snap")->box.Centre());
    Drag(Point{fresh.x, box.y + 0.5 * box.height}, 3.0, 0.1 * box.height);
    EXPECT_NEAR(Position("Function1_PointY3"), 0.375f, 1e-4f);
    for (int i = 0; i < 4; ++i)
        instrument.Undo();
    EXPECT_EQ(face.Model().ValueOf("Function 1 Last Point"), points);
}

TEST_F(FaceTest, TheHeadIsHeldOnTheTapeItselfAndAmountsAreTyped) {
    Put("Play Head Mode", "Manual");
    Put("Play Head Position", "25 %");
    Play();
    Picture();
    const Rect tape = Find<TapeView>("Tape")->box;
    const auto at = [&](double place) { return Point{tape.x + place * tape.width, tape.y + 40.0}; };
    Drag(at(0.25), 0.5 * tape.width, 0.0);
    EXPECT_NEAR(Position("Play Head Position"), 0.75f, 1e-3f);
    Drag(at(0.5), 0.1 * tape.width, 0.0, true);
    EXPECT_NEAR(Position("Play Head Position"), 0.51f, 1e-3f);
    Play();
    Put("Spray", "0 %");
    face.Wheel({at(0.51), -1.0, {}});
    EXPECT_NEAR(Position("Play Head Position"), 0.49f, 1e-3f);
    face.Key({Key::Up, 0, {}});
    EXPECT_NEAR(Position("Spray"), 0.02f, 1e-3f);
    face.OpenPage(3);
    Picture();
    const Rect cells = Find<MatrixView>("Matrix")->box;
    Click({cells.x + 129.0, cells.y + 24.0});
    Type("-40 %");
    EXPECT_NEAR(face.Model().Amount(0, 0), -0.4f, 1e-3f);
}

TEST_F(FaceTest, BarsAreDrawnWithoutGapsAndMovedByKeys) {
    Put("Step Sequencer Steps", "16");
    Click(Find<SourceTile>("Step Sequencer")->box.Centre());
    Picture();
    const Rect bars = Find<BarEditor>("Step Sequencer Step 9 Value")->box;
    Drag(Point{bars.x + 4.0, bars.y + 0.25 * bars.height}, bars.width - 8.0, 0.0);
    const uint32_t first = *face.Model().Find("StepSeq_StepVal1");
    for (uint32_t i = 0; i < 16; ++i)
        EXPECT_NEAR(instrument.Position(first + i), 0.75f, 0.01f);
    face.Key({Key::Up, 0, {}});
    EXPECT_NEAR(instrument.Position(first), 0.77f, 0.01f);
}

/// Every kind of control takes a source, and a drag of its amount is one step.
TEST_F(FaceTest, AnyControlTakesASourceAndItsAmountIsDragged) {
    for (size_t page = 0; page < 2; ++page) {
        face.OpenPage(page);
        Picture();
        for (Widget* const widget : face.Shown()) {
            Control* const control = widget->ControlAt(widget->box.Centre());
            if (control == nullptr || !control->Row() || control->Influences().count > 0)
                continue;
            const Point from = Find<SourceTile>("Function 3")->box.Centre();
            Drag(from, widget->box.Centre().x - from.x, widget->box.Centre().y - from.y);
            EXPECT_EQ(control->Influences().count, 1u) << control->Name();
            if (dynamic_cast<ControlWidget*>(widget) != nullptr) {
                PointerEvent event = At(widget->box.Centre());
                event.modifiers.alt = true;
                now += 1.0;
                face.Press(event);
                for (int i = 0; i < 4; ++i)
                    face.Move(At({widget->box.Centre().x, widget->box.Centre().y - 10.0 * i}));
                face.Release(At(widget->box.Centre()));
                EXPECT_NEAR(control->Influences().routes[0].amount, 0.4f, 1e-3f) << control->Name();
                instrument.Undo();
                EXPECT_NEAR(control->Influences().routes[0].amount, 0.25f, 1e-3f);
            }
            instrument.Undo();
            EXPECT_EQ(control->Influences().count, 0u) << control->Name();
        }
    }
}

TEST_F(FaceTest, ASlotIsDraggedAlongTheRoadAndBypassed) {
    face.OpenPage(1);
    Put("FX1 Effect", "Filter");
    EXPECT_NEAR(Position("FX1 Dry / Wet"), 1.0f, 1e-3f);
    Put("FX1 Effect", "Reverb");
    EXPECT_NEAR(face.Model().ValueOf("FX1 Reverb Decay"), 70.0, 0.1);
    EXPECT_NEAR(Position("FX1 Dry / Wet"), 0.35f, 1e-3f);
    const Rect road = Find<RoadView>("Road")->box;
    Put("FX1 Position", "After Mix");
    Drag(Point{road.x + 640.0, road.y + 9.0}, -580.0, 22.0);
    EXPECT_EQ(face.Model().Text(*face.Model().Find("FX1 Position")), "Feedback Loop");
    instrument.Undo();
    EXPECT_EQ(face.Model().Text(*face.Model().Find("FX1 Position")), "After Mix");
    Click(Find("FX1 Bypass")->box.Centre());
    EXPECT_EQ(Position("FX1 Bypass"), 1.0f);
}

TEST_F(FaceTest, PresetsAreSavedFoundAgainRenamedAndTagged) {
    const auto answer = [&](const char* button, const char* text) {
        Click(Find(button)->box.Centre());
        EXPECT_TRUE(face.IsTyping());
        Type(text);
        EXPECT_FALSE(face.IsTyping()) << button;
        Picture();
    };
    std::filesystem::remove_all(presets.Folder());
    Click(Find("Presets")->box.Centre());
    Picture();
    Put("Density", "@0.3");
    Click(Find("Save as")->box.Centre());
    face.Text("One of mine");
    face.Key({Key::Tab, 0, {}});
    Type("first , second");
    Picture();
    EXPECT_EQ(presets.Entries()[presets.Find("One of mine").value()].tags.back(), "second");
    answer("Tags\u2026", "dark, of mine");
    answer("Rename\u2026", "Mine");
    EXPECT_EQ(instrument.PresetName(), "Mine");
    EXPECT_EQ(presets.Entries()[presets.Find("Mine").value()].tags.back(), "of mine");
    Put("Density", "@0.9");
    face.Model().LoadPreset(*presets.Find("Mine"));
    EXPECT_NEAR(Position("Density"), 0.3f, 1e-3f);
    Click(Find("Delete")->box.Centre());
    EXPECT_FALSE(presets.Find("Mine").has_value());
}

TEST_F(FaceTest, MidiIsLearntAndForgottenAndAFreeControlAssignedFromTheMenu) {
    const auto turn = [&](uint8_t value) {
        instrument.Flush({{.kind = test::InstrumentEvent::Kind::Midi, .midi = {0xb0, 74, value}}});
        instrument.Poll();
    };
    const uint32_t index = *face.Model().Find("Persistence");
    Choose("Learn MIDI", "Persistence");
    EXPECT_EQ(instrument.LearningMidi(), index);
    turn(3);
    turn(127);
    EXPECT_FLOAT_EQ(instrument.Position(index), 1.0f);
    ASSERT_EQ(setenv("XDG_DATA_HOME", presets.Folder().c_str(), 1), 0);
    Click(Find("Song")->box.Centre());
    Choose("Keep MIDI map");
    test::ReadyInstrument other;
    EXPECT_EQ(Host::LoadDefaultMidiMap(other), "");
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(other.GetMidiMap().size(), 1u);
    Choose("Forget MIDI", "Persistence");
    Choose("Assign to a free", "Persistence");
    Choose("Assign 3");
    EXPECT_EQ(instrument.Assignment(2), index);
    for (const size_t learnt : {0u, 1u, 0u}) {
        Click(Find("Undo (Ctrl-Z)")->box.Centre());
        EXPECT_EQ(instrument.GetMidiMap().size(), learnt);
    }
    EXPECT_EQ(instrument.Assignment(2), Host::kUnassigned);
}

TEST_F(FaceTest, ASongOfItsOwnRunsAndIsTappedWhereTheHostHasNone) {
    const auto open = [&] { Click(Find("Song")->box.Centre()); };
    open();
    Choose("Run");
    EXPECT_TRUE(instrument.Song().Runs());
    open();
    Choose("Tempo: 120");
    Type("93.75");
    EXPECT_EQ(instrument.Song().Tempo(), 93.75);
    open();
    Choose("Tap tempo");
    now += 0.5 - 1.0;  // a click comes a second after the last
    Choose("Tap tempo");
    EXPECT_NEAR(instrument.Song().Tempo(), 120.0, 6.0);  // a picture may come between
}

TEST_F(FaceTest, TheSetListIsPutInOrderByClicks) {
    std::filesystem::remove_all(presets.Folder());
    Click(Find("Presets")->box.Centre());
    Picture();
    const std::vector<std::string> names{presets.Entries()[0].name, presets.Entries()[1].name};
    const auto open = [&] { Click(Find("Set list")->box.Centre()); };
    for (size_t entry = 0; entry < 2; ++entry) {
        face.Model().LoadPreset(entry);
        open();
        Choose("Add " + names[entry]);
    }
    EXPECT_EQ(presets.SetList(), names);
    for (const char* const step : {"Later", "Take out"}) {
        open();
        Choose("0   ");
        Choose(step);
    }
    EXPECT_EQ(presets.SetList(), std::vector<std::string>{names[0]});
}

TEST_F(FaceTest, TextsFitAndEveryControlIsExplained) {
    for (const double scale : {0.75, 1.0, 1.5, 3.0}) {
        Put("Granular Mode", scale < 1.0 ? "Texture" : scale > 1.0 ? "Beat" : "Classic");
        Resize(scale);
        for (uint32_t view = 0; view < 40; ++view) {
            Put("FX1 Effect", ("@" + std::to_string(view / 4 / 9.0)).c_str());
            Click(Find<SourceTile>(Host::SourceName(view / 4 % 7))->box.Centre());
            face.OpenPage(view % 4);
            std::vector<PlacedText> texts;
            face.NoteTexts(&texts);
            Picture();
            face.NoteTexts(nullptr);
            EXPECT_GT(texts.size(), 30u);
            for (const PlacedText& text : texts)
                EXPECT_LE(text.width, text.box.width + 0.5) << text.text << " at " << scale;
            for (Widget* const widget : face.Shown()) {
                const Control* const control = widget->ControlAt(widget->box.Centre());
                EXPECT_TRUE(control == nullptr || !control->Help().empty()) << control->Name();
                for (const double edge :
                     {widget->box.x, widget->box.y, widget->box.width, widget->box.height})
                    EXPECT_EQ(std::fmod(edge, Theme::kGrid), 0.0)
                        << (control ? control->Name() : widget->TipTitle({}));
            }
        }
    }
}

TEST_F(FaceTest, WhatMovesIsDrawnAnewAndWhatRestsIsNot) {
    for (int i = 0; i < 200; ++i)
        Picture();
    EXPECT_TRUE(Picture().empty());
    Play();
    const std::vector<Rect> moved = Picture();
    const auto isIn = [&](const Rect& box) {
        return std::any_of(moved.begin(), moved.end(),
                           [&](const Rect& rect) { return rect.Meets(box); });
    };
    EXPECT_TRUE(isIn(Find<TapeView>("Tape")->box));
    EXPECT_FALSE(isIn(Find("Random Pan")->box));
}

TEST(FaceLifeTest, AClosedFaceStopsTheFeed) {
    test::ReadyInstrument instrument;
    Host::PresetLibrary presets(test::Catalog(), Host::FactoryPresets(), "/nonexistent");
    auto face = std::make_unique<Face>(instrument, presets);
    EXPECT_TRUE(instrument.Display().IsWatched());
    face.reset();
    EXPECT_FALSE(instrument.Display().IsWatched());
}

}  // namespace
}  // namespace Quorvan::Ui
