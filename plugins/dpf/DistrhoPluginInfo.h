#pragma once

// What the framework is built for; it looks for this file by its name.

#define DISTRHO_PLUGIN_BRAND "Quorvan"
/// Stereo or mono in, and a stereo side-chain behind it.
#ifdef TESSERAE_MONO
#define DISTRHO_PLUGIN_NAME "Tesserae Mono"
#define DISTRHO_PLUGIN_URI "urn:quorvan:tesserae:mono"
#define DISTRHO_PLUGIN_NUM_INPUTS 3
#else
#define DISTRHO_PLUGIN_NAME "Tesserae"
#define DISTRHO_PLUGIN_URI "urn:quorvan:tesserae"
#define DISTRHO_PLUGIN_NUM_INPUTS 4
#endif
#define DISTRHO_PLUGIN_NUM_OUTPUTS 2

#define DISTRHO_PLUGIN_HAS_UI 1
/// The face draws what the instrument beside it does.
#define DISTRHO_PLUGIN_WANT_DIRECT_ACCESS 1
#define DISTRHO_UI_USE_CAIRO 1
#define DISTRHO_UI_USER_RESIZABLE 1
#define DISTRHO_UI_DEFAULT_WIDTH 1280
#define DISTRHO_UI_DEFAULT_HEIGHT 800
#define DISTRHO_PLUGIN_IS_RT_SAFE 1
#define DISTRHO_PLUGIN_WANT_LATENCY 1
#ifdef DISTRHO_PLUGIN_TARGET_VST3
// The framework would show 2080 hidden parameters for it ahead of ours, and hosts automate the
// first few hundred only.
#define DISTRHO_PLUGIN_WANT_MIDI_INPUT 0
#else
#define DISTRHO_PLUGIN_WANT_MIDI_INPUT 1
#endif
#define DISTRHO_PLUGIN_WANT_PARAMETER_VALUE_CHANGE_REQUEST 1
#define DISTRHO_PLUGIN_WANT_PROGRAMS 1
#define DISTRHO_PLUGIN_WANT_STATE 1
#define DISTRHO_PLUGIN_WANT_FULL_STATE 1
#define DISTRHO_PLUGIN_WANT_TIMEPOS 1

#define DISTRHO_PLUGIN_LV2_CATEGORY "lv2:ModulatorPlugin"
#define DISTRHO_PLUGIN_VST3_CATEGORIES "Fx|Modulation|Stereo"
