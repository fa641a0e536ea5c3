// SPDX-License-Identifier: Apache-2.0
// The reference host of the library: finds the subcommand, hands it its words, turns failures into
// a message and an exit code.
#include <cstdio>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "command.h"
#include "errors.h"
#include "interrupt.h"
#include "marlo110k/printf.h"

namespace host {

#define MARLO_COMMAND(name) extern const Command k##name##Command;
#include "commands.h"
#undef MARLO_COMMAND

namespace {

const Command* const kCommands[] = {
#define MARLO_COMMAND(name) &k##name##Command,
#include "commands.h"
#undef MARLO_COMMAND
};

void PrintHelp(std::FILE* out) {
  std::fprintf(out,
               "usage: marlo COMMAND [ARGUMENT...]\n\nWorks on Wave, Wave64 and AIFF files, and on PNG and JPEG "
               "pictures.\n\ncommands:\n");
  for (const Command* command : kCommands) std::fprintf(out, "  %-9s %s\n", command->name, command->summary);
  std::fprintf(out,
               "\n\"marlo COMMAND --help\" tells more about one of them.\n"
               "\nexit codes: 0 fine, 1 failed (the reason stands on stderr with its code), 2 wrong usage\n"
               "\nexample:\n  marlo mix out.wav voice.wav music.wav@2.5:-12dB\n");
}

int RunCommand(const Command& command, std::span<const std::string> words) {
  if (Arguments::AskForHelp(words)) {
    std::fputs(command.help, stdout);
    return kFine;
  }
  try {
    return command.run(Arguments(words, command.options));
  } catch (const UsageError& error) {
    std::fprintf(stderr, "marlo %s: %s\nTry \"marlo %s --help\".\n", command.name, error.what(), command.name);
    return kWrongUsage;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "marlo %s: %s\n", command.name, Failure(E_OUTOFMEMORY, "").what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "marlo %s: %s\n", command.name, error.what());
  }
  return kFailed;
}

int Run(std::span<const std::string> words) {
  if (words.empty()) {
    PrintHelp(stderr);
    return kWrongUsage;
  }
  const std::string& name = words.front();
  if (name == "--help" || name == "-h" || name == "help") {
    PrintHelp(stdout);
    return kFine;
  }
  for (const Command* command : kCommands) {
    if (name == command->name) return RunCommand(*command, words.subspan(1));
  }
  std::fprintf(stderr, "marlo: There is no command \"%s\".\nTry \"marlo --help\".\n", name.c_str());
  return kWrongUsage;
}

}  // namespace
}  // namespace host

int main(int count, char** words) {
  host::CatchInterrupts();
  ZrPrintF_AddToken(u"AppName", u"marlo");
  const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
  const int code = host::Run(arguments);
  // Output that couldn't be written (a full disk behind stdout) must not look like success.
  if ((std::fflush(stdout) != 0 || std::ferror(stdout) != 0) && code == host::kFine) {
    std::fprintf(stderr, "marlo: %s\n", host::Failure(ZR_E_FILE_WRITE, "").what());
    return host::kFailed;
  }
  return code;
}
