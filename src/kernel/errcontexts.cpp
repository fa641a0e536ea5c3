// SPDX-License-Identifier: Apache-2.0
// The operations in which something can fail, by their published numbers. A text may hold one "%s" for the argument.
#include "kernel/errtables.h"

namespace marlo {
namespace {

struct ContextRow {
  uint32_t context;
  zrlang_t text;
};

constinit ContextRow contexts[] = {
    {0, English(u"An error occurred during the current operation.")},
    {1, English(u"An error occurred while processing the undo buffer. You should save your work immediately using a "
                u"new project filename and restart $(AppName).")},
    {2, English(u"An error occurred while loading a plug-in.")},
    {3, English(u"An error occurred in the effect chain '%s'.\n")},
    {4, English(u"An error occurred accessing project media %s.")},
    {5, English(u"An error occurred while loading the project file %s.")},
    {6, English(u"An error occurred while saving the project file %s.")},
    {7, English(u"An error occurred while creating the media file %s.")},
    {8, English(u"An error occurred during an edit operation.")},
    {9, English(u"An error occurred while importing the EDL file %s.")},
    {10, English(u"An error occurred while exporting the EDL file %s.")},
    {11, English(u"An error occurred while starting playback.")},
    {12, English(u"An error occurred while recording.")},
    {13,
     English(u"The plug-in %s could not be run.  One or more components required to run this plug-in may be missing.")},
    {14, English(u"An error occurred while opening an audio device.")},
    {15, English(u"The plug-in preset '%s' could not be loaded.")},
    {16, English(u"An error occurred while creating a new project.")},
    {17, English(u"An error occurred while creating a new track.")},
    {18, English(u"An error occurred while reading the incoming time code.")},
    {19, English(u"An error occurred while generating the MIDI time code.")},
    {20, English(u"An error occurred while generating the MIDI clock.")},
    {21, English(u"One or more audio playback devices do not support the current sample rate and/or bit-depth.")},
    {22, English(u"An error occurred while opening one or more files.")},
    {23, English(u"An error occurred while saving one or more files.")},
    {24, English(u"An error occurred in the toolbar.")},
    {25, English(u"An error occurred while adding track plug-ins.")},
    {26, English(u"An error occurred starting $(AppName).")},
    {27, English(u"An error occurred in a file format plug-in.")},
    {28, English(u"An error occurred while encoding a file.")},
    {29, English(u"An error occurred while writing a file.")},
    {30, English(u"An error occurred while transferring a file.")},
    {31, English(u"The DirectX Plug-In %s failed to register properly.")},
    {32, English(u"The DirectX Plug-In %s failed to unregister properly.")},
    {33, English(u"An error occurred while importing media.")},
    {34, English(u"An error occurred while creating a proxy file for a stream.")},
    {35, English(u"An error occurred while previewing from the device.")},
    {36, English(u"An error occurred while capturing from the device.")},
    {37, English(u"An error occurred while controlling the device.")},
    {38, English(u"An error occurred while previewing a file on the device.")},
    {39, English(u"An error occurred while printing a file to the device.")},
    {40, English(u"An error occurred while trying to upgrade this application.")},
    {41, English(u"An error occurred while working with a camera or scanner.")},
    {42, English(u"An error occurred while initializing the Show Me component.\n\nAll Show Me functionality will be "
                 u"disabled.")},
    {43, English(u"Some disk management options may not work as expected.")},
    {44, English(u"An error occurred while extracting audio from CD.")},
    {45, English(u"An error occurred during this command (%s)")},
    {46, English(u"An error occurred during execution of the script %s.")},
    {47, English(u"An error occurred while trying to open a project file from a previous version.")},
    {48, English(u"An error occurred with the Media Manager. This feature will be unavailable.")},
    {50, English(u"An error occurred accessing source project information from the media.\n\n%s")},
    {51, English(u"An error occurred while importing the AAF file %s.")},
    {52, English(u"An error occurred while exporting the AAF file %s.")},
    {54, English(u"An error occurred attempting to launch the application associated with the source project for the "
                 u"media.\n\n%s")},
    {55, English(u"An error occurred attempting to use the Gracenote service\n\n")},
    {56, English(u"No information available for this CD\n\n")},
    {57, English(u"An error occurred while renaming a file.")},
};

}  // namespace

const zrlang_t& ContextDescriptor(uint32_t context) noexcept {
  for (const ContextRow& row : contexts) {
    if (row.context == context) return row.text;
  }
  return contexts[0].text;
}

}  // namespace marlo
