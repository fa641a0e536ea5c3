// SPDX-License-Identifier: Apache-2.0
// The sentences of result codes. Most begin with two line feeds, which set the explanation apart from the operation.
#include "kernel/errtables.h"

namespace marlo {
namespace {

struct CodeText {
  uint32_t code;
  const char16_t* text;
};

constexpr CodeText kTexts[] = {
    {0x80004005, u"\n\nThe reason for the error could not be determined."},
    {0x8000FFFF, u"\n\nAn unexpected error has occurred."},
    {0x80070057, u"\n\nAn invalid argument was specified."},
    {0x80004003, u"\n\nAn invalid pointer was specified."},
    {0x80004001, u"\n\nA necessary function has not been implemented."},
    {0x8007000E,
     u"\n\nThe system is low on memory. You may be able to reduce memory usage by closing other applications."},
    {0x80070006, u"\n\nAn invalid handle was specified."},
    {0x80004002, u"\n\nA necessary COM interface was not available.  You may need to reboot your computer."},
    {0x80070005, u"\n\nAccess is denied.  Make sure this file is not read only or in use by another application."},
    {0x80040154, u"\n\nThe COM object failed to initialize."},
    {0x8004E000, u"\n\nAn unsupported media type was requested."},
    {0x0004E005, u"\n\nThis feature is not configured properly."},
    {0x8004E001, u"\n\nThe request is not enabled for this device."},
    {0x8004E002, u"\n\nThe disk is full. Please free some space and try again."},
    {0x8004E003, u"\n\nApplication resources are low. You may regain resources by closing some applications."},
    {0x8004E004, u"\n\nTrying to open allocated resource."},
    {0x8004E005, u"\n\nThe system is busy."},
    {0x8004E00C, u"\n\nThe operation was cancelled by the user."},
    {0x8004E006, u"\n\nThe file could not be created."},
    {0x8004E032, u"\n\nThe file could not be created. Another file with that name exists."},
    {0x8004E007,
     u"\n\nThe file could not be opened. Make sure the file exists and that you have access to the file/folder."},
    {0x8004E05A, u"\n\nThe file could not be opened because some other application already has it open."},
    {0x8004E05B,
     u"\n\nThe file could not be opened because you do not have a high enough access permission to open it."},
    {0x8004E009,
     u"\n\nAn error occurred writing the file. Make sure you have write access to the file/folder and that there is "
     u"enough free space."},
    {0x8004E008,
     u"\n\nAn error occurred reading the file. Make sure you have read access to the file/folder and that it is not "
     u"corrupted."},
    {0x8004E16D, u"\n\nThe file could not be modified because it is marked as readonly."},
    {0x8004E00B, u"\n\nThe file is most likely corrupted or of an unknown format."},
    {0x8004E00D, u"\n\nThe file name is not valid."},
    {0x8004E01C, u"\n\nThe file was created with an unsupported version of the program."},
    {0x8004E165, u"\n\nThe file is in use by another operation."},
    {0x8004E00E,
     u"\n\nA necessary resource is missing. You should re-install $(AppName) as the application file appears to be "
     u"corrupted."},
    {0x8004E00F, u"\n\nAn error occurred while creating a window."},
    {0x8004E010, u"\n\nAn error occurred while opening a device driver."},
    {0x8004E011, u"\n\nAn error occurred while opening a codec."},
    {0x8004E012, u"\n\nAn error occurred while converting with a codec."},
    {0x8004E015, u"\n\nA device is not available."},
    {0x80040037, u"\n\nA device does not exist."},
    {0x80040964, u"\n\nThe device specified is in use."},
    {0x800404B0, u"\n\nAn invalid device was specified."},
    {0x800404E0, u"\n\nNo more devices."},
    {0x8004E0A0, u"\n\nNo devices exist."},
    {0x8004E016, u"\n\nThe file is an unsupported format."},
    {0x8004E017, u"\n\nAn Exception has occurred."},
    {0x8004E0A1, u"\n\nTime out occurred when preparing the audio device for playback."},
    {0x8004E080, u"\n\nThe file is most likely corrupted or of an unknown format. A necessary RIFF header is missing."},
    {0x8004E081, u"\n\nThe file is most likely corrupted or of an unknown format. A necessary LIST header is missing."},
    {0x8004E082, u"\n\nThe file is most likely corrupted or of an unknown format. A chunk has a length of 0."},
    {0x8004E083,
     u"\n\nThis file cannot be opened by the installed version of $(AppName), or the file may be corrupt. Please "
     u"download and install the latest update of $(AppName)."},
    {0x80030070,
     u"\n\nThe system is low on memory. You may be able to reduce memory usage by closing other applications."},
    {0x80030005, u"\n\nThere are not sufficient permissions for reading/writing a stream object."},
    {0x80030103, u"\n\nData cannot be written for reasons other than no access or no space."},
    {0x80030009, u"\n\nAn invalid pointer was specified."},
    {0x8003001D,
     u"\n\nAn error occurred writing the file. Make sure you have write access to the file/folder and that there is "
     u"enough free space."},
    {0x8004E084,
     u"\n\nAn error occurred when loading a plug-in or plug-ins.  The plug-in(s) specified are not installed on this "
     u"system."},
    {0x0004E009,
     u"\n\nAn error occurred when loading a plug-in or plug-ins.  The plug-in preset(s) could not be loaded."},
    {0x0004E003, u"\n\nOne or more media files could not be located."},
    {0x8004E02E, u"\n\nThere was no room to add the plug-in(s)."},
    {0x8004E02F, u"\n\nThe plug-ins could not be used on a track."},
    {0x8004E030, u"\n\nThe plug-ins do not support the track's media type."},
    {0x8004E0A2, u"\n\nUnable to mix audio.  The operation timed out."},
    {0x8004E051, u"\n\nThe file exists in the project and cannot be overwritten."},
    {0x8004E0A3, u"\n\nUnable to build peaks.  Cannot get access to the wave file."},
    {0x8004E01F, u"\n\nNo compatible video codec was found."},
    {0x8004E0A5, u"\n\nNo template was specified."},
    {0x8004E019,
     u"\n\nThe existing file could not be deleted. Make sure this file is not read only or in use by another "
     u"application."},
    {0x8004E01E, u"\n\nAn error occurred while opening a codec."},
    {0x8004E0A6, u"\n\nWindows was unable to execute the given command."},
    {0x0004E000, u"\n\nThe file had a problem in it; however, some content may have been recovered."},
    {0x0004E006, u"\n\nNo compatible video codec was found."},
    {0x8004E00A, u"\n\nThe item was not found."},
    {0x8004E01A, u"\n\nThe file has no audio."},
    {0x8004E01B, u"\n\nA component failed to initialize."},
    {0x8004E01D, u"\n\nThe file has no video."},
    {0x8004E023, u"\n\nThere is not enough audio data available for this operation."},
    {0x8004E050, u"\n\nThere is not enough data available for this operation."},
    {0x8004E025, u"\n\nThe file may be corrupt."},
    {0x8004E026, u"\n\nToo many files are open."},
    {0x8004E028, u"\n\nThe sampling rate is not supported by the codec."},
    {0x8004E0A8, u"\n\nInsufficient bandwidth to store target data rate."},
    {0x8004E054, u"\n\nThe application can't read data fast enough to keep up with the operation."},
    {0x0004E007, u"\n\nThe proper stream could not be found in the media file."},
    {0x0004E008, u"\n\nSome streams in the media file could not be opened."},
    {0x8004E035, u"\n\nA stream could not be opened because it was unrecognized or corrupt."},
    {0x8004E036, u"\n\nA stream could not be opened."},
    {0x8004E037, u"\n\nA stream could not be created."},
    {0x8004E038, u"\n\nA stream could not be read."},
    {0x8004E039, u"\n\nA stream could not be written."},
    {0x8004E173, u"\n\nCurrent project is unnamed, cannot perform the operation."},
    {0x8004E033, u"\n\nThe application does not support this file type."},
    {0x8004E03A, u"\n\nThe file being rendered has exceeded the maximum size allowed for the selected format."},
    {0x8004E0C5, u"\n\nAn IOCTL call has failed."},
    {0x0004E00B, u"\n\nA file had to be renamed during the operation."},
    {0x0004E00C, u"\n\nThe format of the stream is not consistent throughout the file."},
    {0x0004E00E, u"\n\nThis project file was created by an older version of $(AppName)."},
    {0x8004E03B, u"\n\nThe selected codec does not support the current render settings."},
    {0x8004E03D,
     u"\n\nAn incorrect number of audio input channels were specified\n\n(for example, must be 2 if stereo music is "
     u"selected)."},
    {0x8004E03E, u"\n\nThe video frame size is not supported."},
    {0x0004E010, u"\n\nThis project file was created by a different version of the program."},
    {0x8004E163, u"\n\nNo renderer found for source reader."},
    {0x0004E015,
     u"\n\nThe playback devices specified in the project do not map to the current system settings. The project has "
     u"been remapped to different devices."},
    {0x8004E0AB, u"\n\nThe template's audio bitrate is too large for the target bitrate."},
    {0x8004E0B4, u"\n\nThe template's peak bitrate is less than the average bitrate."},
    {0x8004E142, u"\n\nYou need to be logged on with adminstrator privileges to complete this operation."},
    {0x8004E047, u"\n\nThe file format plugin for the specified format was not properly initialized."},
    {0x8004E02B, u"\n\nThe number of channels is not supported."},
    {0xC00D0BC2, u"\n\nThe required Windows Media audio codec is not installed."},
    {0xC00D0BC4, u"\n\nThe required Windows Media video codec is not installed."},
    {0xC00D0BCF, u"\n\nThere are no more Windows Media samples in the current range."},
    {0xC00D002B, u"\n\nThe Windows Media request is invalid in the current state."},
    {0xC00D0BC6, u"\n\nThe Windows Media profile is invalid."},
    {0xC00D0BC3, u"\n\nAn error occurred while converting with a codec."},
    {0xC00D0BC5, u"\n\nAn error occurred while converting with a codec."},
    {0x8004E020,
     u"\n\nThe file could not be renamed. Make sure this file is not read only or in use by another application."},
    {0x8004E162, u"\n\nThe TWAIN manager could not be initialized. TWAIN_32.dll missing or corrupt."},
    {0x8004E0B5,
     u"\n\nNo compatible WIA devices could be found.\nIf a compatible device is available, make sure the device is "
     u"connected and turned on."},
    {0x8004E0B6, u"\n\nThe WIA device's capture dialog failed to initialize."},
    {0x8004E164, u"\n\n%s file type is unsupported in this version of $(AppName)."},
    {0x8004E034, u"\n\nThe file has Digital Rights Management protection."},
    {0x8004E109,
     u"\n\nThis project contains CD track markers that are not properly quantized.\n\n$(AppName) has quantized these "
     u"markers to the nearest CD frame boundary. You should verify the placement and resave the project"},
    {0x8004E045, u"\n\nThe requested command is not available at this time."},
    {0x8004E089,
     u"\n\nThis file appears to have been created in a newer version of $(AppName), and is not supported by this "
     u"version of $(AppName).\nPlease download and install the latest update of $(AppName)."},
    {0x0004E018,
     u"\n\nCertain features contained in the older project file could not be converted exactly into the new version. "
     u"As a result the project may not look or sound the same."},
    {0x8004E05C,
     u"\n\nA security error occurred attempting to launch the application associated with the source project for the "
     u"media. Most likely the registered application is not a known Orlu application."},
    {0x8004E05D, u"\n\nThe source project information in the media file is either not found or is not valid."},
    {0x8004E05E, u"\n\nThe source project file referenced by the media does not exist."},
    {0x8004E05F, u"\n\nMedia Manager initialization failed."},
    {0x8004E060, u"\n\nThe Microsoft .NET runtime could not be initialized."},
    {0x8004E08A, u"\n\nFailed to register with windows terminal services."},
    {0x8004E186, u"\n\nThe destination folder cannot reside under the source folder."},
    {0x8004E16E, u"\n\nOne or more files could not be moved because they are in use by another application."},
    {0x8004E16F, u"\n\nOne or more files could not be deleted because they are in use by another application."},
    {0x8004E170, u"\n\nThe file already exists."},
    {0x8004E189, u"\n\nThe instrument has compressed samples which are currently not supportted by this software."},
    {0x8004E031,
     u"One or more effects in the package failed to load.\n\nDo you want to try to load the loadable effects from the "
     u"chain?"},
    {0x8004E0AF, u"The template is invalid."},
    {0x8004E171, u"The file is already opened to a different stream, cannot open requested stream."},
    {0x8004E172, u"The requested stream number is not a valid stream in the file."},
    {0x8004E02A, u"The bit depth is not supported."},
    {0x8004E02A, u"The bit depth is not supported."},
    {0x8004E0D4, u"ASPI is not installed."},
    {0x8004E03C, u"Buffer to small."},
    {0x8004E166, u"Clipboard is already open."},
    {0x8004E0A9, u"Duplicate item."},
    {0x800A0026, u"End of File is not an error."},
    {0x8004E0EC, u"Cannot connect to the internet."},
    {0x8004E0EE, u"No data was read from the internet."},
    {0x8004E0ED, u"Could not open URL"},
    {0x8004E0EF, u"Failed to read from the internet resource."},
    {0x8004E0AC, u"An operation is in progress."},
    {0x8004E055, u"The CD Track is invalid."},
    {0x8004E0C9, u"There is no DISC in the drive."},
    {0x8004E0AE, u"There are no Publishing Providers."},
    {0x8004E0C2, u"The device has not been configured."},
    {0x8004E0AA, u"Recording in progress."},
    {0x8004E024, u"Cannot read script."},
    {0x8004E15F, u"Cannot find initialization file."},
    {0x8004E161, u"Zip extraction failed."},
    {0x8004E061, u"The sample rate is not supported."},
};

/// A table of descriptors and one of rows that point at them, both made at compile time.
template <size_t kRows>
struct Descriptors {
  zrlang_t rows[kRows];
};

template <size_t kRows>
constexpr Descriptors<kRows> DescriptorsOf(const CodeText (&texts)[kRows]) noexcept {
  Descriptors<kRows> result{};
  for (size_t i = 0; i < kRows; ++i) result.rows[i] = English(texts[i].text);
  return result;
}

constinit auto descriptors = DescriptorsOf(kTexts);

template <size_t kRows>
struct Rows {
  _zrerror_table rows[kRows];
};

template <size_t kRows>
constexpr Rows<kRows> RowsOf(const CodeText (&texts)[kRows], const Descriptors<kRows>& table) noexcept {
  Rows<kRows> result{};
  for (size_t i = 0; i < kRows; ++i) result.rows[i] = {ZrCode(texts[i].code), &table.rows[i]};
  return result;
}

constinit const auto rows = RowsOf(kTexts, descriptors);

}  // namespace

std::span<const _zrerror_table> ErrorTable() noexcept { return rows.rows; }

}  // namespace marlo
