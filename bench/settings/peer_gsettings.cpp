// SPDX-License-Identifier: Apache-2.0
// GSettings over a key file.
#define G_SETTINGS_ENABLE_BACKEND
#include <gio/gio.h>
#include <gio/gsettingsbackend.h>

#include "settings/peers.h"

namespace bench_settings {
namespace {

GSettings* settings = nullptr;
GSettingsSchema* schema = nullptr;
std::string names[kIds];

}  // namespace

void OpenGSettings(const std::string& folder) {
  for (int id = 0; id < kIds; ++id) names[id] = "n" + std::to_string(id);
  GSettingsSchemaSource* source =
      g_settings_schema_source_new_from_directory(MARLO_BENCH_GSETTINGS, nullptr, FALSE, nullptr);
  schema = g_settings_schema_source_lookup(source, "bench.settings", FALSE);
  g_settings_schema_source_unref(source);
  GSettingsBackend* backend = g_keyfile_settings_backend_new((folder + "/peer.ini").c_str(), "/", nullptr);
  settings = g_settings_new_full(schema, backend, nullptr);
  g_object_unref(backend);
}

int ReadWithGSettings(int id) { return g_settings_get_int(settings, names[id].c_str()); }

void WriteWithGSettings(int id, int value) {
  g_settings_set_int(settings, names[id].c_str(), value);
  g_settings_sync();
}

void CloseGSettings() {
  g_object_unref(settings);
  g_settings_schema_unref(schema);
}

}  // namespace bench_settings
