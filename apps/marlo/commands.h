// SPDX-License-Identifier: Apache-2.0
// The list of subcommands, one line each; NAME stands for the constant kNAMECommand of its source.
// No include guard: whoever includes it defines MARLO_COMMAND for what each line is to become.

MARLO_COMMAND(Convert)
MARLO_COMMAND(Error)
MARLO_COMMAND(Filter)
MARLO_COMMAND(Info)
MARLO_COMMAND(Lang)
MARLO_COMMAND(Level)
MARLO_COMMAND(Mix)
MARLO_COMMAND(Peaks)
MARLO_COMMAND(Picture)
MARLO_COMMAND(Repair)
MARLO_COMMAND(Settings)
MARLO_COMMAND(Time)
