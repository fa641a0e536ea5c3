// SPDX-License-Identifier: Apache-2.0
// Records, numbers and callbacks that hosts, drivers and plug-ins share with the audio engine. Types only.
//
// Positions called ticks count 100 nanoseconds, positions called samples count frames of the bus's rate.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/picture.h"
#include "marlo110k/waveformat.h"

// ---- Kinds -----------------------------------------------------------------------------------------

/// Kinds of nodes in the mixer. An id is unique within its kind only.
enum EBUSTYPE : uint32_t {
  EBUSTYPE_PORT = 1,  ///< A hardware output.
  EBUSTYPE_MAIN = 2,
  EBUSTYPE_SUB = 3,
  EBUSTYPE_FX = 4,
  EBUSTYPE_SYNTH = 5,
  EBUSTYPE_PREVIEW = 7,
  EBUSTYPE_HARDWAREINPUT = 8,
  EBUSTYPE_INPUT = 11,
};

/// The id of the preview bus.
inline constexpr int32_t kZrPreviewBusId = -3;

/// Shapes of a mixer; 2 to 5 are the surround ones.
enum EMIXERTYPE : uint32_t {
  EMIXERTYPE_STEREO = 1,
  EMIXERTYPE_SURROUND51 = 2,
  EMIXERTYPE_LASTSURROUND = 5,
  EMIXERTYPE_NONE = 7,  ///< No mixer is active.
};

/// How a mixer speaks to its audio devices.
enum AUDIODRVMODEL : uint32_t {
  AUDIODRVMODEL_MAPPER = 0,
  AUDIODRVMODEL_CLASSIC = 1,
  AUDIODRVMODEL_MULTIPORT = 4,
  AUDIODRVMODEL_EMULATED = 5,
  AUDIODRVMODEL_OTHERCLASSIC = 6,
  AUDIODRVMODEL_SURROUNDMAPPER = 11,
};

/// What a driver model is known by in masks and device flags.
struct ZRDRVMODELROW {
  uint32_t model;
  uint32_t mask;
  uint32_t flags;
};
inline constexpr ZRDRVMODELROW kZrDriverModels[] = {
    {AUDIODRVMODEL_MAPPER, 0x001, 36},       {AUDIODRVMODEL_CLASSIC, 0x002, 33},
    {AUDIODRVMODEL_MULTIPORT, 0x004, 40},    {AUDIODRVMODEL_EMULATED, 0x010, 48},
    {AUDIODRVMODEL_OTHERCLASSIC, 0x008, 34}, {AUDIODRVMODEL_SURROUNDMAPPER, 0x100, 44},
};

/// Two mask bits for each stereo pair.
inline constexpr uint32_t kZrPairMasks[16] = {0x00000003, 0x0000000C, 0x00000030, 0x000000C0, 0x00000300, 0x00000C00,
                                              0x00003000, 0x0000C000, 0x00030000, 0x000C0000, 0x00300000, 0x00C00000,
                                              0x03000000, 0x0C000000, 0x30000000, 0xC0000000};
/// The masks by which pairs of a surround bus are counted.
inline constexpr uint32_t kZrSurroundPairMasks[7] = {3, 12, 48, 192, 1536, 20480, 163840};

// ---- Transport -------------------------------------------------------------------------------------

/// Units of a position argument.
enum ZRUNITS : uint32_t { ZRUNITS_TICKS = 1, ZRUNITS_SAMPLES = 2, ZRUNITS_PREVIEWTICKS = 4 };

/// Mode flags of start and stop. The low 16 bits are the host's and are only handed back.
enum TRANSPORTMODE : uint32_t {
  TF_NOENGINE = 0x00010000,    ///< The caller has done the mixer's part.
  TF_RESTART = 0x00100000,     ///< A start during a run stops it first.
  TF_NOPOLLSTOP = 0x00400000,  ///< The end of the range doesn't end the run.
  TF_MONITOR = 0x00800000,     ///< With TF_RECORD: nothing is written.
  TF_MIDIPREVIEW = 0x0C000000,
  TF_RECORD = 0x10000000,
  TF_PLAY = 0x20000000,
  TF_MIDIPLAY = 0x40000000,  ///< MIDI port group, mode 1.
  TF_MIDIREC = 0x80000000,   ///< MIDI port group, mode 2; both are mode 3.
};

/// Status and sync words of the transport, which are read ORed.
enum TRANSPORTSTATUS : uint32_t {
  TS_READY = 0x0001,
  TS_PLAYING = 0x0002,
  TS_STOPPING = 0x0004,
  TS_MONITORING = 0x0010,
  TS_RECORDING = 0x0020,
  TS_MIDIPREVIEW = 0x0200,
  TS_PREVIEW = 0x0400,
  TS_PREVIEWSTOPPING = 0x0800,
  TS_NOPOLLSTOP = 0x4000,
  TS_SLAVED = 0x8000,
  TS_SYNC_SMPTE = 0x00010000,
  TS_SYNC_B = 0x00020000,
  TS_SYNC_C = 0x00040000,
  TS_GENERATE = 0x00100000,
  TS_GENERATING = 0x00200000,

  TS_BUSY = TS_PLAYING | TS_MONITORING | TS_RECORDING | TS_MIDIPREVIEW | TS_PREVIEW,
  TS_RUNNING = TS_PLAYING | TS_MIDIPREVIEW | TS_PREVIEW,
  TS_PREVIEWING = TS_MIDIPREVIEW | TS_PREVIEW,
};
static_assert(TS_BUSY == 0x632 && TS_RUNNING == 0x602 && TS_PREVIEWING == 0x600);

/// A loop. A tick field or `enabled` with all bits set means: leave it as it is.
struct _tag_looppoint {
  int64_t startTicks;
  int64_t startSamples;
  int64_t lengthTicks;
  int64_t lengthSamples;
  uint32_t maxPasses;
  uint32_t enabled;
  uint32_t askedEnabled;  ///< As the caller last asked for it.
  uint32_t reserved1;
  uint32_t units;  ///< ZRUNITS_SAMPLES: the sample fields are the truth; anything else: the tick fields.
  uint32_t reserved2;
  uint64_t changeMask;  ///< Written by the mixer.
};
static_assert(sizeof(_tag_looppoint) == 64);
static_assert(offsetof(_tag_looppoint, lengthTicks) == 16 && offsetof(_tag_looppoint, maxPasses) == 32);
static_assert(offsetof(_tag_looppoint, units) == 48 && offsetof(_tag_looppoint, changeMask) == 56);

/// An older description of a mixer's configuration, still loaded from project streams.
struct _tmixerprops {
  uint32_t value1;
  uint32_t value2;
  uint32_t value3;
  char16_t name[260];
  uint32_t value532;
  uint32_t value536;
  uint32_t value540;
  uint32_t reserved1[42];
  uint32_t value712;
  uint32_t reserved2;
  uint32_t value720;
  uint32_t value724;
  uint32_t value728;
  uint32_t reserved3;
  int64_t values736[8];
};
static_assert(sizeof(_tmixerprops) == 800 && offsetof(_tmixerprops, name) == 12);
static_assert(offsetof(_tmixerprops, value532) == 532 && offsetof(_tmixerprops, value540) == 540);
static_assert(offsetof(_tmixerprops, value712) == 712 && offsetof(_tmixerprops, value720) == 720);
static_assert(offsetof(_tmixerprops, value728) == 728 && offsetof(_tmixerprops, values736) == 736);

// ---- Mixer callbacks -------------------------------------------------------------------------------

/// Messages of the mixer to its host.
enum EMIXERCBMSG : uint32_t {
  ZRMIXMSG_CLOSED = 1,
  ZRMIXMSG_STOPPING = 2,
  ZRMIXMSG_OPENED = 3,
  ZRMIXMSG_DEVICESSTARTED = 4,
  ZRMIXMSG_SEEKBEGINS = 6,
  ZRMIXMSG_LOOPCHANGED = 7,  ///< Change mask in `extra`: 1 enabled, 2 start, 4 length.
  ZRMIXMSG_PREPARE = 8,      ///< Position in samples.
  ZRMIXMSG_PLAYSTARTED = 9,
  ZRMIXMSG_PLAYSTOPPED = 10,  ///< By the engine itself.
  ZRMIXMSG_POSITION = 11,
  ZRMIXMSG_SEEKDONE = 12,
  ZRMIXMSG_MONITORON = 13,
  ZRMIXMSG_MONITOROFF = 14,
  ZRMIXMSG_IDLEBLOCK = 15,
  ZRMIXMSG_PREVIEWENGINEOFF = 16,
  ZRMIXMSG_PREVIEWSTOPPED = 17,
  ZRMIXMSG_PREVIEWENGINEON = 18,
  ZRMIXMSG_PREVIEWSEEK = 21,
  ZRMIXMSG_PREVIEWLOOPCHANGED = 22,
  ZRMIXMSG_FILL = 25,
  ZRMIXMSG_FILLPORT = 26,
  ZRMIXMSG_FILLFX = 28,
  ZRMIXMSG_FILLPREVIEW = 29,
  ZRMIXMSG_MONITORFILL = 30,
  ZRMIXMSG_MONITORFILLFX = 31,
  ZRMIXMSG_FILLSYNTH = 32,
  ZRMIXMSG_BEFORECHAIN = 37,
  ZRMIXMSG_AFTERCHAIN = 38,
  ZRMIXMSG_BEFORECHAINFX = 39,
  ZRMIXMSG_AFTERCHAINFX = 40,
  ZRMIXMSG_MONITORBEFORECHAIN = 41,
  ZRMIXMSG_MONITORAFTERCHAIN = 42,
  ZRMIXMSG_MONITORBEFORECHAINFX = 43,
  ZRMIXMSG_MONITORAFTERCHAINFX = 44,
  ZRMIXMSG_METRONOME = 52,
};

/// What a fill answers beside a count of frames.
inline constexpr int32_t kZrFillNone = -2;
inline constexpr int32_t kZrFillFatal = -3;
inline constexpr int32_t kZrFillWholeChunk = -5;

/// Flags of a callback record, of a render call and of a block.
enum ZRRENDER : uint32_t {
  ZRRENDER_EMPTYOUT = 0x00040000,
  ZRRENDER_PREVIEWSYNTH = 0x00080000,
  ZRRENDER_MONITOR = 0x00100000,
  ZRRENDER_ENDOFBUS = 0x01000000,
  ZRRENDER_MUTED = 0x02000000,
  ZRRENDER_LOOPWRAPPED = 0x04000000,
  ZRRENDER_RECORDING = 0x08000000,
  ZRRENDER_PREROLLUNMUTED = 0x10000000,
};

/// Flags of MIDI fills and synth renders. They are other numbers than those of ZRRENDER.
enum ZRSYNTHRENDER : uint32_t {
  ZRSYNTH_LOOPWRAPPED = 0x10000000,
  ZRSYNTH_MIDIOUTPUT = 0x20000000,  ///< A synth with MIDI output.
  ZRSYNTH_PREROLLSILENT = 0x40000000,
};

/// Which timing fields of a block, and so of a callback record, hold something.
enum ZRBLOCKTIMING : uint32_t {
  ZRBLOCK_TEMPO = 0x1000,
  ZRBLOCK_TWOVALUES = 0x2000,
  ZRBLOCK_RANGE = 0x4000,
  ZRBLOCK_POSITION = 0x10000,
  ZRBLOCK_PULSESPERBEAT = 0x20000,
};

/// The record that comes with every callback of the engine. The engine fills it and relies on the result only.
struct _tmixercb {
  uint64_t hostA;  ///< The host's own pair of the bus.
  uint64_t hostB;
  uint32_t mixerType;
  int32_t sourcePort;  ///< Id of the bus that is asked; mind `busKind`.
  uint32_t busKind;
  uint32_t channelMask;
  uint32_t flags;  ///< ZRRENDER.
  uint32_t reserved1;
  int64_t blockPositionA;
  int64_t blockPositionB;
  double rate;
  int64_t positionSamples;
  const _zrwaveformat* format;  ///< Of the buffer: FLOAT32 unless the mixer was told FLOAT64.
  double tempo;                 ///< Beats a minute.
  uint32_t twoValues[2];
  int64_t range[2];
  int32_t rangeCount;
  uint32_t reserved2;
  int64_t explicitPosition;
  double pulsesPerBeat;
};
static_assert(sizeof(_tmixercb) == 136);
static_assert(offsetof(_tmixercb, mixerType) == 16 && offsetof(_tmixercb, flags) == 32);
static_assert(offsetof(_tmixercb, blockPositionA) == 40 && offsetof(_tmixercb, rate) == 56);
static_assert(offsetof(_tmixercb, positionSamples) == 64 && offsetof(_tmixercb, format) == 72);
static_assert(offsetof(_tmixercb, tempo) == 80 && offsetof(_tmixercb, range) == 96);
static_assert(offsetof(_tmixercb, explicitPosition) == 120 && offsetof(_tmixercb, pulsesPerBeat) == 128);

/// Answers the messages of EMIXERCBMSG.
/// @param buffer null when the message has none, and then `frames` is 0.
/// @param extra a change mask or a position, as the message says.
/// @return frames or a kZrFill value for a fill; otherwise 0, and a negative result ends a control operation.
using ZRMIXERPROC = int32_t (*)(_tmixercb* record, uint32_t message, uint64_t context, void* buffer, int32_t frames,
                                int64_t extra);
/// MIDI messages and record messages. `buffer` is what the message carries: an event buffer, a loop record or null.
using ZRMIDIPROC = int32_t (*)(_tmixercb* record, uint32_t message, uint64_t context, void* buffer,
                               int64_t positionTicks, int64_t lengthTicks, uint32_t flags);

/// What a bus-data message carries.
struct ZRBUSDATA {
  uint64_t mixer;
  uint64_t hostTag;
  uint32_t busKind;
  uint32_t reserved;
  const _zrwaveformat* format;
  int64_t positionSamples;
  int64_t frames;
  void* data;
  int64_t capacityFrames;
};
static_assert(sizeof(ZRBUSDATA) == 64);
using ZRBUSDATAPROC = int32_t (*)(ZRBUSDATA* record, uint32_t message, uint64_t context);

/// Mixes a stereo pair into the surround main bus.
/// @param pan the bus's five pan values.
using ZRSURROUNDPROC = int32_t (*)(_tmixercb* record, uint64_t context, const _zrwaveformat* targetFormat, void* target,
                                   const _zrwaveformat* sourceFormat, const void* source, int32_t frames,
                                   const double* pan);
/// Folds a buffer of several channels to one in place. @return negative: the engine folds instead.
using ZRFOLDPROC = int32_t (*)(uint64_t context, const WAVEFORMATEX* format, void* buffer, int32_t frames);
/// Mixes a send into its target. @return kZrFillFatal ends the run.
using ZRSENDPROC = int32_t (*)(void* mixer, uint64_t context, void* target, void* source,
                               const _zrwaveformat* targetFormat, void* targetBuffer, const _zrwaveformat* sourceFormat,
                               const void* sourceBuffer, int32_t frames, int64_t positionSamples, uint32_t flags,
                               uint64_t hostA, uint64_t hostB);

/// Options of ZRMIXERINIT.
enum ZRMIXERINIT_OPTIONS : uint32_t {
  ZRMIXERINIT_KEEPOUTPUTS = 1,  ///< Becomes the mixer's option 0x4000.
  ZRMIXERINIT_KEEPINPUTS = 2,   ///< Becomes the mixer's option 0x8000.
};

/// What a mixer is started with. Null callbacks are allowed.
struct ZRMIXERINIT {
  uint32_t size;  ///< sizeof(ZRMIXERINIT).
  uint32_t options;
  uint64_t owner;
  const _zrwaveformat* mainFormat;
  const _zrwaveformat* hardwareFormat;
  int64_t latencyTicks;
  int32_t buffers;
  uint32_t reserved;
  ZRMIXERPROC proc;
  uint64_t context;
  ZRMIDIPROC midi;  ///< Null: no MIDI step runs.
  uint64_t midiContext;
  ZRMIDIPROC record;
  uint64_t recordContext;
  ZRBUSDATAPROC busData;
  uint64_t busDataContext;
  ZRSURROUNDPROC surround;
  uint64_t surroundContext;
  ZRFOLDPROC fold;
  uint64_t foldContext;
  ZRSENDPROC send;
  uint64_t sendContext;
};
static_assert(sizeof(ZRMIXERINIT) == 160);
static_assert(offsetof(ZRMIXERINIT, mainFormat) == 16 && offsetof(ZRMIXERINIT, latencyTicks) == 32);
static_assert(offsetof(ZRMIXERINIT, proc) == 48 && offsetof(ZRMIXERINIT, sendContext) == 152);

struct IZRTransport;
/// Messages of the transport to its client; 0 may refuse a start and 6 a stop.
using ZRTRANSPORTPROC = int32_t (*)(IZRTransport* transport, uint32_t message, uint32_t* mode, uint64_t context,
                                    int64_t* position, int32_t reason);

/// One send, kept by the node that receives it and found by its source.
struct ZRSENDRECORD {
  void* source;
  double gain;
  uint32_t pre;  ///< 1 takes the source before its fader.
  uint32_t reserved;
  uint64_t hostA;
  uint32_t hostB;
  uint32_t enabled;
};
static_assert(sizeof(ZRSENDRECORD) == 40);
static_assert(offsetof(ZRSENDRECORD, hostA) == 24 && offsetof(ZRSENDRECORD, enabled) == 36);

/// A block on its way through the mixer. Opaque: hosts hand it on.
struct ZRMIXBLOCK {
  uint8_t opaque[200];
};
static_assert(sizeof(ZRMIXBLOCK) == 200);

// ---- MIDI ---------------------------------------------------------------------------------------

/// Head of an event in a MIDI stream buffer; a long event's bytes follow, padded to 4.
struct ZRMIDISTREAMEVENT {
  uint32_t delta;
  uint32_t streamId;  ///< 0.
  uint32_t event;     ///< Bit 31: a long event, whose length is in the low 24 bits.
};
static_assert(sizeof(ZRMIDISTREAMEVENT) == 12);

/// A MIDI event as host and plug-in exchange it.
struct ZRMIDIEVENT {
  uint32_t owner;  ///< Reserved by the owner.
  uint32_t time;
  uint32_t flags;
  uint32_t reserved1;
  uint8_t state;
  uint8_t bankLsb;  ///< The two bank bytes are set when a program change was merged with its bank messages.
  uint8_t bankMsb;
  uint8_t reserved2;
  uint32_t message;  ///< Status, two data bytes, release velocity. Bit 31: long, with the length in the low 24 bits.
  uint64_t reserved3;
  uint32_t duration;  ///< Of a note. A long message has its bytes from here on.
  uint32_t reserved4;
};
static_assert(sizeof(ZRMIDIEVENT) == 40 && offsetof(ZRMIDIEVENT, state) == 16 && offsetof(ZRMIDIEVENT, message) == 20);
static_assert(offsetof(ZRMIDIEVENT, duration) == 32);

/// Types of tagMPEVENT, one bit each.
enum MPEVENTTYPE : uint32_t {
  MPEVENT_UNKNOWN = 0x1,
  MPEVENT_NRPN = 0x2,
  MPEVENT_RPN = 0x4,
  MPEVENT_BANKPROGRAM = 0x8,
  MPEVENT_SYSTEM = 0x10,
  MPEVENT_NOTEOFF = 0x20,
  MPEVENT_NOTE = 0x40,
  MPEVENT_KEYPRESSURE = 0x80,
  MPEVENT_CONTROLLER = 0x100,
  MPEVENT_PROGRAM = 0x200,
  MPEVENT_CHANNELPRESSURE = 0x400,
  MPEVENT_PITCHWHEEL = 0x800,
  MPEVENT_SYSEX = 0x10000,
  MPEVENT_SYSEXCONTINUED = 0x20000,
  MPEVENT_PAYLOADA = 0x40000,
  MPEVENT_PAYLOADB = 0x80000,
  MPEVENT_META = 0x100000,
};

/// A MIDI event as plug-ins see it.
struct tagMPEVENT {
  uint32_t type;
  uint32_t flags;
  uint64_t reserved1;
  int64_t tag1;  ///< -1 by default.
  uint32_t channel;
  uint32_t reserved2;
  int64_t tag2;
  int64_t time;
  uint32_t units;  ///< Always 2.
  uint32_t reserved3;
  uint32_t duration;  ///< Of a note, or the payload's bytes.
  uint8_t data[4];
  void* payload;  ///< From the task allocator.
};
static_assert(sizeof(tagMPEVENT) == 72 && offsetof(tagMPEVENT, tag1) == 16 && offsetof(tagMPEVENT, channel) == 24);
static_assert(offsetof(tagMPEVENT, tag2) == 32 && offsetof(tagMPEVENT, time) == 40);
static_assert(offsetof(tagMPEVENT, duration) == 56 && offsetof(tagMPEVENT, data) == 60);
static_assert(offsetof(tagMPEVENT, payload) == 64);

// ---- Streams of file plug-ins ----------------------------------------------------------------------

/// Kinds of streams in a media file.
enum ZRFILESTREAMTYPE : uint32_t { ZRFILESTREAM_AUDIO = 1, ZRFILESTREAM_VIDEO = 2, ZRFILESTREAM_TEXT = 8 };

/// Bytes that a stream's format record sets aside for the format itself.
inline constexpr size_t kZrStreamFormatBytes = 96;

/// How a stream states its format.
struct _ZRFILESTREAMFORMATINFOv2 {
  uint32_t size;  ///< At least 184.
  uint32_t type;  ///< ZRFILESTREAMTYPE.
  int64_t length;
  uint64_t reserved;
  uint8_t extension[64];  ///< By type; audio uses the first 32 bytes.
  union {
    uint8_t audio[kZrStreamFormatBytes];  ///< The head of a _zrwaveformat, cut after its extra bytes or here.
    BITMAPINFOHEADER video;
  } format;
};
static_assert(sizeof(_ZRFILESTREAMFORMATINFOv2) == 184 && offsetof(_ZRFILESTREAMFORMATINFOv2, length) == 8);
static_assert(offsetof(_ZRFILESTREAMFORMATINFOv2, extension) == 24);
static_assert(offsetof(_ZRFILESTREAMFORMATINFOv2, format) == 88);
