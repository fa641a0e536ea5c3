// SPDX-License-Identifier: Apache-2.0
// Audio devices between the mixer and whatever carries them: the contract of the library's own wave classes and of
// driver modules from outside. Neither is built yet; the interfaces are fixed for those who write them.
//
// A driver model (IAudioClass) owns its outputs and inputs, or devices (IAudioDevice) that carry many stereo pairs.
// Data flow by callback: a pump thread asks the client for samples, or hands recorded ones over. The order of slots
// is the contract; those marked "constant" or "none" keep their place only.
//
// Latencies and positions called ticks count 100 nanoseconds. Buffers of names hold 260 characters.
#pragma once

#include "marlo110k/contract/unknown.h"
#include "marlo110k/waveformat.h"

inline constexpr GUID IID_IAudioClasses = {
    0x9F5A368D, 0xBC04, 0x11D0, {0x96, 0x5E, 0x08, 0x00, 0x2B, 0xE5, 0xD6, 0x09}};
inline constexpr GUID IID_IAudioClass = {0x9F5A368A, 0xBC04, 0x11D0, {0x96, 0x5E, 0x08, 0x00, 0x2B, 0xE5, 0xD6, 0x09}};
inline constexpr GUID IID_IAudioDevice = {0x9F5A368C, 0xBC04, 0x11D0, {0x96, 0x5E, 0x08, 0x00, 0x2B, 0xE5, 0xD6, 0x09}};
/// Of a device with an extension interface; none of the library's own models has it.
inline constexpr GUID IID_IAudioDeviceExtension = {
    0xC3D5A06F, 0xAD5A, 0x4264, {0xB7, 0x00, 0x2B, 0x0B, 0xB0, 0x94, 0x75, 0x7F}};
inline constexpr GUID IID_IAudioOut = {0xF9C17A51, 0x4D0E, 0x4E52, {0x9B, 0x3A, 0x61, 0x0C, 0x52, 0xD4, 0x8E, 0x17}};
inline constexpr GUID IID_IAudioIn = {0xF9C17A52, 0x4D0E, 0x4E52, {0x9B, 0x3A, 0x61, 0x0C, 0x52, 0xD4, 0x8E, 0x17}};

/// Characters of every name here, with the final zero.
inline constexpr uint32_t kZrAudioNameCharacters = 260;

/// What a driver model is.
enum ZRAUDIOCLASS_FLAGS : uint32_t {
  ZRAUDIOCLASS_CLASSIC = 1,
  ZRAUDIOCLASS_FILTERED = 2,  ///< Classic without emulated and multi-port devices.
  ZRAUDIOCLASS_MAPPER = 4,
  ZRAUDIOCLASS_DEVICES = 8,  ///< Owns devices instead of outputs and inputs.
  ZRAUDIOCLASS_EMULATED = 16,
  ZRAUDIOCLASS_OUTPUT2 = 32,  ///< Outputs share the class's pump rules.
  ZRAUDIOCLASS_SERVICEDUE = 64,
};

struct IAudioClass;
struct IAudioDevice;
struct IAudioOut;
struct IAudioIn;

/// Messages of an output to its client.
enum ZRAUDIOOUTMSG : int32_t {
  ZRAUDIOOUT_OPENED = 0,   ///< 0 refuses.
  ZRAUDIOOUT_CLOSING = 1,  ///< 0 refuses.
  ZRAUDIOOUT_BUFFER = 2,   ///< Frames wanted. The result is what was delivered, kZrAudioNoMoreData, or a failure.
  ZRAUDIOOUT_STARTED = 4,
  ZRAUDIOOUT_STOPPED = 5,
  ZRAUDIOOUT_FIRSTOFCYCLE = 0x8000,  ///< Added to ZRAUDIOOUT_BUFFER for the first call of a pump cycle.
};
inline constexpr int32_t kZrAudioNoMoreData = -2;

/// Client of an output. Buffer requests come on a pump thread with the output's lock held: the client must not stop
/// the same output there. The other messages come on the thread of the call that causes them.
/// @param index of the buffer. @param frames wanted. @param maxFrames room in `buffer`.
/// @param blockRecord null; for drivers that know more about the block.
using ZRAUDIOOUTPROC = int32_t (*)(IAudioOut* out, int32_t message, uint64_t context, int32_t index, void* buffer,
                                   int32_t frames, int32_t maxFrames, void* blockRecord);

/// Messages of an input to its client.
enum ZRAUDIOINMSG : int32_t {
  ZRAUDIOIN_OPENED = 0,
  ZRAUDIOIN_CLOSING = 1,
  ZRAUDIOIN_DATA = 960,  ///< Recorded frames, on the input's delivery thread.
};
using ZRAUDIOINPROC = int32_t (*)(IAudioIn* in, int32_t message, uint64_t context, int32_t index, void* buffer,
                                  int32_t frames);

/// Messages of a class or a device to its client. A negative result from one of those that announce something
/// (0, 2, 4, 6, 8, 10) ends the operation there.
enum ZRAUDIOCLASSMSG : int32_t {
  ZRAUDIOCLASS_OPEN = 0,
  ZRAUDIOCLASS_OPENED = 1,
  ZRAUDIOCLASS_STARTING = 2,
  ZRAUDIOCLASS_STARTED = 3,
  ZRAUDIOCLASS_STOPPING = 4,
  ZRAUDIOCLASS_STOPPED = 5,
  ZRAUDIOCLASS_PREFILLBEGINS = 6,
  ZRAUDIOCLASS_PREFILLDONE = 7,
  ZRAUDIOCLASS_RESTARTBEGINS = 8,
  ZRAUDIOCLASS_RESTARTED = 9,
  ZRAUDIOCLASS_RESETBEGINS = 10,
  ZRAUDIOCLASS_RESETDONE = 11,
  ZRAUDIOCLASS_SERVICEBEGINS = 15,  ///< On the pump thread.
  ZRAUDIOCLASS_SERVICEDONE = 16,    ///< On the pump thread.
};
using ZRAUDIOCLASSPROC = int32_t (*)(IUnknown* object, int32_t message, uint64_t context, uint64_t a, uint64_t b);

/// States of an output.
enum ZRAUDIOOUT_STATE : uint32_t {
  ZRAUDIOOUT_ISOPEN = 0x1,
  ZRAUDIOOUT_ISPLAYING = 0x2,
  ZRAUDIOOUT_ISPAUSED = 0x4,
  ZRAUDIOOUT_CLIENTSTOPPED = 0x80,
  ZRAUDIOOUT_NOTACCURATE = 0x100,  ///< The device's position moves in steps.
  ZRAUDIOOUT_PREFILLWAITS = 0x200,
  ZRAUDIOOUT_CLIENTSILENT = 0x800,
};

/// Keys of the properties of outputs and inputs.
enum ZRAUDIOPROPERTY : uint32_t {
  ZRAUDIOPROPERTY_DEVICEID = 0,
  ZRAUDIOPROPERTY_MANUFACTURER = 1,
  ZRAUDIOPROPERTY_PRODUCT = 2,
  ZRAUDIOPROPERTY_DRIVERVERSION = 3,
  ZRAUDIOPROPERTY_SUPPORT = 4,
  ZRAUDIOPROPERTY_MEASUREDRATE = 18,  ///< f64; result 1 while nothing was measured.
  ZRAUDIOPROPERTY_HASVOLUME = 22,
  ZRAUDIOPROPERTY_INTERPOLATE = 23,  ///< Positions between the device's steps from the clock.
  ZRAUDIOPROPERTY_MINREFILL = 24,    ///< Frames.
  ZRAUDIOPROPERTY_ALIGNMENT = 25,    ///< Refill frames are rounded down to it; 0 is refused.
  ZRAUDIOPROPERTY_BUFFERS = 26,      ///< When open, else the default.
  ZRAUDIOPROPERTY_BUFFERBYTES = 27,  ///< When open.
  ZRAUDIOPROPERTY_DEFAULTBUFFERS = 28,
  ZRAUDIOPROPERTY_STATE = 48,
  ZRAUDIOPROPERTY_NULL = 64,    ///< Plays to nothing.
  ZRAUDIOPROPERTY_NUDGE = 65,   ///< Added to positions, in units of 512 bytes.
  ZRAUDIOPROPERTY_24BIT = 67,   ///< Prefer containers of 24 bits.
  ZRAUDIOPROPERTY_STORED = 68,  ///< Kept for the host.
  ZRAUDIOPROPERTY_KIND = 69,
};

/// A value of a property.
union ZRAUDIOVALUE {
  int64_t integer;
  double real;
};
static_assert(sizeof(ZRAUDIOVALUE) == 8);

/// What an object hears that was attached to an output or input.
enum ZRAUDIOEVENT : uint32_t {
  ZRAUDIOEVENT_OPEN = 1,
  ZRAUDIOEVENT_CLOSE = 2,
  ZRAUDIOEVENT_START = 3,
  ZRAUDIOEVENT_STOP = 4,
  ZRAUDIOEVENT_PREFILL = 5,
  ZRAUDIOEVENT_PROPERTY = 6,  ///< The key is in `value`.
};

/// Hears of the events of an output or input, on the thread that causes them.
struct IAudioListener : IUnknown {
  /// Slot 3.
  virtual void OnAudioEvent(IUnknown* source, uint32_t event, uint64_t context, uint64_t value) = 0;

 protected:
  ~IAudioListener() = default;
};

/// Walks over classes, devices, outputs or inputs, in the standard shape of enumerators.
struct IAudioEnum : IUnknown {
  /// Slot 3. Gives up to `count` objects, each with a reference. @param fetched may be null for a count of 1.
  /// @return S_OK when all came, else S_FALSE.
  virtual HRESULT Next(uint32_t count, IUnknown** objects, uint32_t* fetched) = 0;
  virtual HRESULT Skip(uint32_t count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IAudioEnum** copy) = 0;

 protected:
  ~IAudioEnum() = default;
};

/// Peaks of a recorded stretch, one a channel.
struct ZRAUDIOPEAKS {
  float peaks[2];  ///< 1.0 is full scale; 1.0000001 says that it clipped.
};

/// A driver model, 38 slots.
struct IAudioClass : IUnknown {
  /// Slot 3.
  virtual HRESULT SetOwner(uint64_t owner) = 0;
  virtual HRESULT ClassSlot4() = 0;  ///< None; gives S_OK.
  /// AUDIODRVMODEL.
  virtual HRESULT GetModel(uint32_t* model) = 0;
  virtual HRESULT GetName(char16_t* buffer, uint32_t characters) = 0;
  /// Slot 7.
  virtual HRESULT GetCounts(uint32_t* outputs, uint32_t* inputs) = 0;
  virtual int32_t ClassSlot8() = 0;  ///< Constant 1.
  virtual int32_t ClassSlot9() = 0;  ///< Constant 1.
  virtual HRESULT SetOwnerValue(uint64_t value) = 0;
  virtual HRESULT GetOwnerValue(uint64_t* value) = 0;

  /// Slot 12. One thread pumps all streams of the class in step.
  virtual HRESULT SetSynchronous(int32_t on) = 0;
  /// 1 when every stream has a pump of its own.
  virtual int32_t IsNotSynchronous() = 0;
  /// Slot 14. From now on a service pass looks at outputs first.
  virtual HRESULT ResetPumpOption() = 0;
  virtual int32_t ClassSlot15() = 0;  ///< Constant 1.

  /// Slot 16. Makes the objects at the first call; further calls only count.
  virtual HRESULT Enumerate() = 0;
  /// Ends them at the last call.
  virtual HRESULT Unenumerate() = 0;
  /// Rebuilds the lists while enumerated and not open; what can't be rebuilt keeps its former list.
  virtual HRESULT Rescan() = 0;

  /// Slot 19. @param buffers 2 to 16; other counts leave it as it is.
  virtual HRESULT SetLatency(int64_t ticks, uint32_t buffers) = 0;
  virtual HRESULT GetLatency(int64_t* ticks, uint32_t* buffers) = 0;

  /// Slot 21.
  virtual HRESULT Open(const WAVEFORMATEX* format, ZRAUDIOCLASSPROC proc, uint64_t context) = 0;
  virtual HRESULT Close() = 0;
  virtual HRESULT Start() = 0;
  /// Waits for the pump thread without a limit.
  virtual HRESULT Stop() = 0;

  /// Slot 25.
  virtual HRESULT PrefillPass() = 0;
  virtual HRESULT EndPrefillPass() = 0;
  virtual HRESULT Run() = 0;
  virtual HRESULT EndRun() = 0;
  virtual HRESULT EndPause() = 0;

  /// Slot 30. From the first running output or input.
  virtual HRESULT GetPlayedTicks(int64_t* ticks) = 0;
  virtual HRESULT GetPosition(int64_t* position) = 0;
  /// The class id of the model's property page; S_FALSE without one.
  virtual HRESULT GetPropertyPage(GUID* page) = 0;

  /// Slot 33. E_NOTIMPL for a model without such objects.
  virtual HRESULT EnumDevices(IAudioEnum** devices) = 0;
  virtual HRESULT EnumInputs(IAudioEnum** inputs) = 0;
  virtual HRESULT EnumOutputs(IAudioEnum** outputs) = 0;
  virtual HRESULT ClassSlot36() = 0;  ///< None.
  /// Slot 37. Ends the object whatever its count; for the list that owns it.
  virtual void Destroy() = 0;

 protected:
  ~IAudioClass() = default;
};

/// A device that carries many stereo pairs, 58 slots.
struct IAudioDevice : IUnknown {
  virtual HRESULT DeviceSlot3() = 0;  ///< Constant E_NOINTERFACE.
  virtual int32_t DeviceSlot4() = 0;  ///< Constant 0.
  virtual int32_t DeviceSlot5() = 0;  ///< Constant 1.
  /// Slot 6.
  virtual HRESULT Enumerate() = 0;
  virtual HRESULT Unenumerate() = 0;
  virtual int32_t DeviceSlot8() = 0;  ///< Constant 0.
  virtual int32_t IsNotEnumerated() = 0;
  virtual int32_t DeviceSlot10() = 0;  ///< Constant 1.
  virtual HRESULT SetOwnerValue(uint64_t value) = 0;
  virtual HRESULT GetOwnerValue(uint64_t* value) = 0;
  /// Slot 13.
  virtual HRESULT SetChannelMask(uint32_t mask) = 0;
  virtual HRESULT GetChannelMask(uint32_t* mask) = 0;
  virtual HRESULT GetModel(uint32_t* model) = 0;
  virtual HRESULT GetName(char16_t* buffer, uint32_t characters) = 0;
  /// Slot 17.
  virtual HRESULT GetCounts(uint32_t* outputs, uint32_t* inputs) = 0;
  virtual HRESULT GetLatency(int64_t* ticks, uint32_t* buffers) = 0;
  virtual HRESULT SetLatency(int64_t ticks) = 0;
  /// Slot 20. Frames of the latency, three times, and 0.
  virtual HRESULT GetFrames(int32_t* a, int32_t* b, int32_t* c, int32_t* d) = 0;
  virtual HRESULT DeviceSlot21() = 0;  ///< E_NOTIMPL.
  virtual int32_t DeviceSlot22() = 0;  ///< Constant 0.

  /// Slot 23.
  virtual HRESULT Open(const WAVEFORMATEX* format, ZRAUDIOCLASSPROC proc, uint64_t context) = 0;
  virtual HRESULT Close() = 0;
  virtual HRESULT Start() = 0;
  virtual HRESULT Stop() = 0;
  /// Slot 27.
  virtual HRESULT Run() = 0;
  virtual HRESULT EndRun() = 0;
  virtual HRESULT Resume() = 0;
  virtual HRESULT EndResume() = 0;
  virtual HRESULT Prefill() = 0;

  /// Slot 32.
  virtual HRESULT GetPlayedTicks(int64_t* ticks, int32_t* flag) = 0;
  virtual HRESULT GetPosition(int64_t* bytes) = 0;
  virtual HRESULT DeviceSlot34() = 0;  ///< E_NOTIMPL.
  virtual HRESULT EnumInputs(IAudioEnum** inputs) = 0;
  virtual HRESULT EnumOutputs(IAudioEnum** outputs) = 0;
  /// Slot 37. Ends the object whatever its count.
  virtual void Destroy() = 0;
  virtual HRESULT GetDeviceId(uint32_t* deviceId) = 0;
  virtual HRESULT DeviceSlot39() = 0;  ///< E_NOTIMPL.

  /// Slot 40.
  virtual HRESULT Initialize(uint32_t channels) = 0;
  virtual HRESULT TestDeviceFormat(const WAVEFORMATEX* format) = 0;
  virtual HRESULT TestPortFormat(const WAVEFORMATEX* format, uint32_t deviceId, uint32_t pair) = 0;
  virtual HRESULT TestFormat(const WAVEFORMATEX* format) = 0;
  /// Slot 44. The buffer has kZrAudioNameCharacters.
  virtual HRESULT GetPortName(uint32_t pair, char16_t* buffer) = 0;
  virtual HRESULT AllocatePortBuffer(IAudioOut* port, uint32_t pair, const WAVEFORMATEX* format, void** buffer,
                                     int32_t* frames) = 0;
  virtual HRESULT FreePortBuffer(IAudioOut* port) = 0;

  /// Slot 47. What a port tells its device; 0 where the device has nothing to do.
  virtual HRESULT PortOpened(IAudioOut* port) = 0;
  /// Slot 48. Clears the port's run state under the pump lock.
  virtual HRESULT PortStopped(IAudioOut* port) = 0;
  virtual HRESULT PortClosed(IAudioOut* port) = 0;
  virtual HRESULT PortStarting(IAudioOut* port) = 0;
  virtual HRESULT PortStarted(IAudioOut* port) = 0;
  virtual HRESULT PortPrefilling(IAudioOut* port) = 0;
  virtual HRESULT PortPrefilled(IAudioOut* port) = 0;
  virtual HRESULT PortChanged(IAudioOut* port) = 0;

  /// Slot 55. @return frames that each port advanced by, or a negative failure of a client.
  virtual int32_t FillDeviceBuffer(void* buffer, int32_t frames, int32_t first) = 0;
  virtual HRESULT Service() = 0;
  /// Slot 57. The pump thread's body; returns when the device stops.
  virtual uint32_t PumpThread() = 0;

 protected:
  ~IAudioDevice() = default;
};

/// An output of one stereo pair, 40 slots.
struct IAudioOut : IUnknown {
  /// Slot 3.
  virtual HRESULT GetHostValue(uint64_t* value) = 0;
  virtual HRESULT SetHostValue(uint64_t value) = 0;
  /// Slot 5. @param cookie for RemoveListener.
  virtual HRESULT AddListener(IAudioListener* listener, uint64_t context, uint32_t* cookie) = 0;
  virtual HRESULT RemoveListener(uint32_t cookie) = 0;
  virtual int32_t OutSlot7() = 0;  ///< Constant 0.
  virtual HRESULT OutSlot8() = 0;  ///< E_NOTIMPL.
  /// Slot 9. The port's name; setting it hides the device's own until an empty name is set.
  virtual HRESULT GetName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT SetName(const char16_t* name) = 0;
  virtual HRESULT GetDeviceName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT SetDeviceName(const char16_t* name) = 0;
  /// Slot 13. The pair as one name.
  virtual HRESULT GetStereoName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT SetStereoName(const char16_t* name) = 0;
  virtual HRESULT GetLeftName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT GetRightName(char16_t* buffer, uint32_t characters) = 0;
  /// Slot 17. Names of both channels made from the device's name. Buffers of kZrAudioNameCharacters.
  virtual HRESULT GetChannelNames(char16_t* left, char16_t* right) = 0;
  virtual HRESULT TestFormat(const WAVEFORMATEX* format) = 0;

  /// Slot 19. @param format rewritten to what was opened. @param buffers, bufferFrames, bufferCount memory of the
  /// client's, or null, 0, 0: the output's own. @param latencyTicks in: wanted; out: what the buffers hold.
  virtual HRESULT Open(WAVEFORMATEX* format, void* buffers, int32_t bufferFrames, int32_t bufferCount,
                       int64_t* latencyTicks, ZRAUDIOOUTPROC proc, uint64_t context) = 0;
  virtual HRESULT Close() = 0;
  /// Slot 21. @param delayMs kept as an offset of the start.
  virtual HRESULT Start(int32_t delayMs) = 0;
  virtual HRESULT Stop() = 0;
  virtual HRESULT Prefill() = 0;
  virtual HRESULT Write(void* buffer, int32_t frames) = 0;
  /// Slot 25.
  virtual HRESULT GetBytePosition(int64_t* bytes) = 0;
  virtual HRESULT GetPlayedTicks(int64_t* ticks) = 0;
  virtual HRESULT GetPosition(int64_t* position) = 0;
  virtual HRESULT GetPlayedSamples(int64_t* frames) = 0;
  /// Slot 29.
  virtual HRESULT SetRateCorrection(double rate) = 0;
  virtual HRESULT GetRateState(double* rate, double* measured) = 0;
  virtual HRESULT SetMaxPlayTime(int64_t ticks) = 0;
  virtual HRESULT GetLastError() = 0;
  /// Slot 33.
  virtual HRESULT GetProperty(uint32_t key, ZRAUDIOVALUE* value) = 0;
  virtual HRESULT SetProperty(uint32_t key, const ZRAUDIOVALUE* value) = 0;
  virtual HRESULT SetClockSource(IUnknown* source) = 0;
  virtual HRESULT SetClock(IUnknown* clock) = 0;
  /// Slot 37. Channels of the device that this pair is.
  virtual HRESULT GetMask(uint32_t* mask) = 0;
  /// Slot 38. Ends the object whatever its count.
  virtual void Destroy() = 0;
  virtual int32_t OutSlot39() = 0;  ///< Constant 0.

 protected:
  ~IAudioOut() = default;
};

/// An input of one stereo pair, 38 slots.
struct IAudioIn : IUnknown {
  /// Slot 3.
  virtual HRESULT GetHostValue(uint64_t* value) = 0;
  virtual HRESULT SetHostValue(uint64_t value) = 0;
  /// Slot 5.
  virtual HRESULT AddListener(IAudioListener* listener, uint64_t context, uint32_t* cookie) = 0;
  virtual HRESULT RemoveListener(uint32_t cookie) = 0;
  virtual HRESULT GetName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT SetName(const char16_t* name) = 0;
  virtual HRESULT GetDeviceName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT SetDeviceName(const char16_t* name) = 0;
  /// Slot 11.
  virtual HRESULT GetStereoName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT GetLeftName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT GetRightName(char16_t* buffer, uint32_t characters) = 0;
  virtual HRESULT GetKind(uint32_t* kind) = 0;
  virtual int32_t InSlot15() = 0;  ///< Constants 0 as far as slot 20.
  virtual int32_t InSlot16() = 0;
  virtual int32_t InSlot17() = 0;
  virtual int32_t InSlot18() = 0;
  virtual int32_t InSlot19() = 0;
  virtual int32_t InSlot20() = 0;
  /// Slot 21. The maximum since the last call.
  virtual HRESULT ReadPeaks(ZRAUDIOPEAKS* peaks) = 0;
  virtual HRESULT TestFormat(const WAVEFORMATEX* format) = 0;
  virtual HRESULT InSlot23() = 0;  ///< E_NOTIMPL.
  /// Slot 24. @param format rewritten to what was opened.
  virtual HRESULT Open(WAVEFORMATEX* format, int64_t latencyTicks, ZRAUDIOINPROC proc, uint64_t context) = 0;
  virtual HRESULT InSlot25() = 0;  ///< E_NOTIMPL.
  virtual HRESULT Close() = 0;
  virtual HRESULT Start() = 0;
  virtual HRESULT Stop() = 0;
  virtual HRESULT Prefill() = 0;
  /// Slot 30.
  virtual HRESULT AddBuffer(void* buffer, int32_t frames) = 0;
  virtual HRESULT GetPlayedTicks(int64_t* ticks) = 0;
  virtual HRESULT GetPosition(int64_t* frames) = 0;
  virtual HRESULT InSlot33() = 0;  ///< E_NOTIMPL.
  virtual HRESULT GetBufferTicks(int64_t* ticks) = 0;
  /// Slot 35.
  virtual HRESULT GetProperty(uint32_t key, ZRAUDIOVALUE* value) = 0;
  virtual HRESULT SetProperty(uint32_t key, const ZRAUDIOVALUE* value) = 0;
  /// Slot 37. Ends the object whatever its count.
  virtual void Destroy() = 0;

 protected:
  ~IAudioIn() = default;
};

/// The list of driver models, 13 slots.
struct IAudioClasses : IUnknown {
  /// Slot 3.
  virtual HRESULT SetOwnerValue(uint64_t value) = 0;
  /// Makes the models whose bits are in `mask` and those of driver modules. @param progress an IZrProgress or null.
  /// @return S_OK, or 1 when there is none.
  virtual HRESULT Initialize(uint32_t mask, IUnknown* progress) = 0;
  virtual HRESULT ClassesSlot5() = 0;  ///< E_NOTIMPL.
  virtual HRESULT ClassesSlot6() = 0;  ///< E_NOTIMPL.
  virtual HRESULT SetPair(uint64_t first, uint64_t second) = 0;
  /// Slot 8.
  virtual HRESULT EnumClasses(IAudioEnum** classes) = 0;
  virtual HRESULT ClassesSlot9() = 0;  ///< E_NOTIMPL.
  virtual uint32_t GetClassCount() = 0;
  virtual uint32_t GetModuleCount() = 0;
  /// Slot 12. Ends the object whatever its count.
  virtual void Destroy() = 0;

 protected:
  ~IAudioClasses() = default;
};
