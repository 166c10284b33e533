#ifndef TESSERAE_H
#define TESSERAE_H

/// The C face of Tesserae, a live granular processor: everything that a plug-in, a player or a
/// binding of another language needs. C99 and C++; link libtesserae-c (pkg-config tesserae-c, CMake
/// Tesserae::c). This header is its manual.
///
/// Life      tesserae_create, tesserae_prepare, tesserae_process again and again,
///           tesserae_destroy. A new processor is silent: load a preset first, such as "shimmer",
///           or a state. Both may come ahead of tesserae_prepare; single writes may not.
/// Results   Functions that can fail answer a code: TESSERAE_OK, which is 0, or one of the others.
///           tesserae_error then has a whole sentence for people. A call that failed has changed
///           nothing, unless it says otherwise. Null where a pointer is asked for is
///           TESSERAE_BAD_ARGUMENT, unless it says what null stands for. Nothing is thrown.
/// Threads   Calls to one processor come in turn, from whatever thread; the caller sees to that.
///           Different processors share nothing. Functions that take no processor may be called at
///           any time from any thread, tesserae_error(NULL) included, which is about its thread.
/// [audio]   marks what neither allocates nor waits, for the audio thread. All else takes memory
///           and, with presets and states, some milliseconds.
/// Units     A position is 0 to 1, the whole travel of a parameter. Audio is 32-bit float, full
///           scale 1, each channel in an array of its own. Time is in frames, one sample of each
///           channel, beats are quarter notes, tempo is beats per minute.
/// Texts     UTF-8 that ends in a zero byte. Those that are handed out belong to the library: what
///           describes parameters and presets holds as long as the library is loaded, what a
///           processor hands out as long as stands beside the function.
/// ABI       Within one major version functions are only added, and records only grow at their
///           end: they begin with their size, which the caller sets. Numbers of parameters and
///           their full names stay for ever.

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define TESSERAE_API __attribute__((visibility("default")))
#else
#define TESSERAE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct tesserae_processor tesserae_processor;

typedef int tesserae_result;
enum {
    TESSERAE_OK = 0,
    TESSERAE_BAD_ARGUMENT = 1,  ///< a null, or a number out of its range
    TESSERAE_UNKNOWN_NAME = 2,  ///< nothing is called so, or several are; the sentence suggests
    TESSERAE_BAD_TEXT = 3,      ///< a text that makes no value, or is no preset or state
    TESSERAE_NOT_PREPARED = 4,  ///< needs tesserae_prepare first
    TESSERAE_READ_ONLY = 5,     ///< the parameter is the processor's own
    TESSERAE_QUEUE_FULL = 6,    ///< 8192 writes wait already
    TESSERAE_NO_ROOM = 7,       ///< the text is longer than the caller's buffer; it was cut
    TESSERAE_BUSY = 8,          ///< somebody else reads the display; try again
    TESSERAE_NO_MEMORY = 9,
    TESSERAE_FAILED = 10  ///< what should not happen; the sentence says what did
};

/* Life */

/// The version of the library that runs, such as "1.0.0".
TESSERAE_API const char* tesserae_version(void);

/// A new processor whose chance comes from the clock. *processor is null where that fails.
TESSERAE_API tesserae_result tesserae_create(tesserae_processor** processor);
/// The same with a seed: all chance repeats from run to run, to the bit.
TESSERAE_API tesserae_result tesserae_create_seeded(uint64_t seed, tesserae_processor** processor);
/// Null does nothing.
TESSERAE_API void tesserae_destroy(tesserae_processor* processor);

/// The sentence of the last call to processor that failed, or the empty text; never null. It
/// holds until the next call that fails. With null: the same for the calling thread's calls without
/// a processor. [audio]
TESSERAE_API const char* tesserae_error(const tesserae_processor* processor);

/* Audio */

/// Sets up a rate in hertz, 1000 to 768000, 1 or 2 inputs and outputs, and 0 to 2 side-chain
/// inputs. Again for another format: parameters keep their positions, writes that wait are dropped,
/// all that sounds is cleared. There is no longest buffer to name. After TESSERAE_NO_MEMORY it has
/// to be prepared again.
TESSERAE_API tesserae_result tesserae_prepare(tesserae_processor* processor, double sample_rate,
                                              uint32_t inputs, uint32_t outputs,
                                              uint32_t side_chain_inputs);

/// Takes and gives any number of frames; 0 does nothing. Arrays hold one pointer a channel, as
/// prepared. Outputs may be the same memory as inputs. Input samples that are no finite numbers
/// count as 0. A null channel is silence, or not wanted; side_chain may be null altogether, and so
/// may aux, four channels to look at: the left channel that the envelope follower hears, its
/// envelope, and the spatialiser's X and Y, 0 to 1. How calls cut the stream does not change the
/// result. [audio]
TESSERAE_API tesserae_result tesserae_process(tesserae_processor* processor,
                                              const float* const* inputs,
                                              const float* const* side_chain, float* const* outputs,
                                              float* const* aux, uint32_t frames);

/// Frames by which the output is late: constant while a format is prepared, 0 before. [audio]
TESSERAE_API uint32_t tesserae_latency(const tesserae_processor* processor);
/// How long the processor goes on sounding above -90 dB after its input has ended, as parameters
/// and tempo stand now, latency not counted: seconds, an upper bound, or INFINITY where it may hold
/// or feed itself.
TESSERAE_API tesserae_result tesserae_tail(tesserae_processor* processor, double* seconds);
/// Clears all that sounds, from the next block on. [audio]
TESSERAE_API tesserae_result tesserae_panic(tesserae_processor* processor);

/// Where the song stands at the next frame: tempo 1 to 999 (held to that), beat negative in a
/// pre-roll, playing 0 or 1. Ahead of every tesserae_process, or once: the beat runs on by the
/// tempo. [audio]
TESSERAE_API tesserae_result tesserae_set_transport(tesserae_processor* processor, double tempo,
                                                    double beat, int playing);
/// Another tempo from the next frame on; 120 in a new processor. [audio]
TESSERAE_API tesserae_result tesserae_set_tempo(tesserae_processor* processor, double tempo);

/* What parameters there are: no processor is needed. Numbers count from 0. */

/// How a parameter moves.
enum {
    TESSERAE_CONTINUOUS = 0,  ///< any number in its range
    TESSERAE_CHOICE = 1,      ///< one of a list of names
    TESSERAE_SWITCH = 2,      ///< "Off" or "On"
    TESSERAE_BINARY = 3       ///< no number at all
};
/// Whose a parameter is.
enum {
    TESSERAE_SETTING = 0,  ///< the user's: presets and states hold it
    TESSERAE_CONTROL = 1,  ///< a lever of the shell, such as "Bypass"
    TESSERAE_OUTPUT = 2,   ///< the processor's report, such as a meter: reading only
    TESSERAE_DRIVEN = 3    ///< follows from other parameters: reading only
};

typedef struct tesserae_parameter {
    size_t size;              ///< set to sizeof(tesserae_parameter) ahead of the call
    const char* name;         ///< full name, unique, for files: "FX1_Delay_Feedback"
    const char* group;        ///< for people: "FX1 Delay"
    const char* label;        ///< for people, unique in its group: "Feedback"
    const char* title;        ///< for people, where the group is not told: "FX1 Delay Feedback"
    const char* unit;         ///< "Hz", "dB", ...; empty for plain numbers
    int kind;                 ///< TESSERAE_CONTINUOUS to TESSERAE_BINARY
    int role;                 ///< TESSERAE_SETTING to TESSERAE_DRIVEN
    int writable;             ///< 1: tesserae_set takes it
    double minimum, maximum;  ///< in the unit; of choices 0 and the last
    float default_position;   ///< of a new processor
    uint32_t choice_count;    ///< 0 where it is continuous
} tesserae_parameter;

/// How many parameters there are; 0 where memory lacks.
TESSERAE_API uint32_t tesserae_parameter_count(void);
/// Fills in *parameter, whose size has to be set.
TESSERAE_API tesserae_result tesserae_describe_parameter(uint32_t index,
                                                         tesserae_parameter* parameter);
/// Name of a choice or of a switch's position; null where there is none.
TESSERAE_API const char* tesserae_choice(uint32_t index, uint32_t choice);
/// The number of a parameter by its full name, its title or its label, whatever the case of their
/// letters. Of a label that several groups have, the granular engine's is meant ("Pitch") or the
/// main one's ("Bypass"); others are refused. "Grain Size", "Density" and every "Rate" stand for
/// several parameters: the one is meant that the settings of processor put in force or, where that
/// is null, those of a new one.
TESSERAE_API tesserae_result tesserae_find_parameter(const tesserae_processor* processor,
                                                     const char* name, uint32_t* index);

/// What a position reads as: "1.25 kHz", "-6.0 dB", "Texture". At most size bytes with the zero; 64
/// are enough for any. scale is what tesserae_scale answers: pitches are shown in its steps; 0 is
/// no scale.
TESSERAE_API tesserae_result tesserae_text_of_position(uint32_t index, float position,
                                                       uint32_t scale, char* text, size_t size);
/// The position that a text asks for: what tesserae_text_of_position writes, in any case and with
/// or without the unit, the beginning of a choice's name, or "@0.25", a bare position.
TESSERAE_API tesserae_result tesserae_position_of_text(uint32_t index, const char* text,
                                                       uint32_t scale, float* position);
/// The number behind the text, in the parameter's unit; of a choice its place in the list.
TESSERAE_API tesserae_result tesserae_value_of_position(uint32_t index, float position,
                                                        uint32_t scale, double* value);
/// The position of such a number, held to the range.
TESSERAE_API tesserae_result tesserae_position_of_value(uint32_t index, double value,
                                                        uint32_t scale, float* position);

/* Where parameters stand */

/// The present position. Writes that wait for the next block are not counted. [audio]
TESSERAE_API tesserae_result tesserae_get(const tesserae_processor* processor, uint32_t index,
                                          float* position);
/// Puts a parameter at a position from the block on that holds the next frame; outside 0 to 1 the
/// end is taken. [audio]
TESSERAE_API tesserae_result tesserae_set(tesserae_processor* processor, uint32_t index,
                                          float position);
/// The same so many frames into the future: 0 is the first frame of the next tesserae_process.
/// Writes land on the processor's blocks of about a millisecond, up to one early. [audio]
TESSERAE_API tesserae_result tesserae_set_at(tesserae_processor* processor, uint32_t frames_ahead,
                                             uint32_t index, float position);
/// What the present position of a parameter reads as, in the scale in force.
TESSERAE_API tesserae_result tesserae_get_text(const tesserae_processor* processor, uint32_t index,
                                               char* text, size_t size);
/// Puts a parameter by name at what a text asks for: ("MoteWeaver_GranularMode", "Texture"). Name
/// and text are read as settings stand now, writes that wait not counted.
TESSERAE_API tesserae_result tesserae_set_text(tesserae_processor* processor, const char* name,
                                               const char* text);
/// The scale that pitches step through now; 0 is none. [audio]
TESSERAE_API uint32_t tesserae_scale(const tesserae_processor* processor);

/* Presets and states: JSON texts. Loading replaces every setting, drops the writes that wait and
   clears what sounds. What a text has that makes no sense is left out, and counts as a warning. */

/// Presets that come with the library, from 0; "init" is the first.
TESSERAE_API uint32_t tesserae_factory_preset_count(void);
/// Short name of one, such as "dense-cloud"; null beyond the last.
TESSERAE_API const char* tesserae_factory_preset_name(uint32_t number);
/// Its whole JSON text; null beyond the last.
TESSERAE_API const char* tesserae_factory_preset_text(uint32_t number);
/// Loads one by its short name or the name in its text.
TESSERAE_API tesserae_result tesserae_load_factory_preset(tesserae_processor* processor,
                                                          const char* name);
/// Loads a preset, a sound for people to choose; leaves "Bypass" alone.
TESSERAE_API tesserae_result tesserae_load_preset(tesserae_processor* processor, const char* json);
/// The present sound as a preset under a name; description may be null. The tempo hint is the last
/// loaded preset's. *json holds until the next saving by this processor.
TESSERAE_API tesserae_result tesserae_save_preset(tesserae_processor* processor, const char* name,
                                                  const char* description, const char** json);
/// Loads a state: all that a project keeps of a processor.
TESSERAE_API tesserae_result tesserae_load_state(tesserae_processor* processor, const char* json);
/// Every setting and "Bypass", to the bit. *json holds until the next saving by this processor.
TESSERAE_API tesserae_result tesserae_save_state(tesserae_processor* processor, const char** json);
/// The tempo that the last loaded preset was made at, a hint that nothing follows by itself; 0
/// where there is none, and after a state. [audio]
TESSERAE_API double tesserae_preset_tempo(const tesserae_processor* processor);
/// How many warnings the last loading brought, and the sentence of one; null beyond the last. They
/// hold until the next loading.
TESSERAE_API uint32_t tesserae_warning_count(const tesserae_processor* processor);
TESSERAE_API const char* tesserae_warning(const tesserae_processor* processor, uint32_t number);

/* What a picture shows */

enum { TESSERAE_SOURCES = 7, TESSERAE_DESTINATIONS = 95 };

typedef struct tesserae_display {
    size_t size;              ///< set to sizeof(tesserae_display) ahead of the call
    uint64_t tape_frames;     ///< length of the loop that records the input
    uint64_t write_frame;     ///< where on it the input is being recorded
    uint64_t play_frame;      ///< where on it new grains begin
    uint64_t grains_started;  ///< pairs, since the processor was made or reset
    uint64_t grains_ended;
    const uint32_t* grains;   ///< where on the tape each sounding grain reads
    const uint32_t* markers;  ///< transients or grid lines on the tape
    const float* tape;        ///< both channels summed; null where not asked for
    uint32_t grain_count;
    uint32_t marker_count;
    float level_left, level_right;              ///< peak meters of the output, linear
    float sources[TESSERAE_SOURCES];            ///< of modulation, -1 to 1
    float destinations[TESSERAE_DESTINATIONS];  ///< positions with all modulation, 0 to 1
} tesserae_display;

/// Whether somebody looks: only then, and only after something has been loaded, sources and
/// destinations move, every 32 blocks. [audio]
TESSERAE_API tesserae_result tesserae_watch(tesserae_processor* processor, int on);
/// Fills in *display, whose size has to be set. Its arrays hold until the next reading. Without the
/// tape [audio]; with it, a copy of up to 16 seconds is made.
TESSERAE_API tesserae_result tesserae_read_display(tesserae_processor* processor, int with_tape,
                                                   tesserae_display* display);
/// Names of modulation sources and destinations, in the order of the display; null beyond the last.
TESSERAE_API const char* tesserae_source_name(uint32_t source);
TESSERAE_API const char* tesserae_destination_name(uint32_t destination);

#ifdef __cplusplus
}
#endif

#endif
