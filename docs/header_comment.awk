# SPDX-License-Identifier: Apache-2.0
# Shows Doxygen the opening comment of a header as the file's documentation; line numbers stay.
NR == 1 { print "/// @file"; next }
/^#/ { opened = 1 }
!opened && /^\/\/( |$)/ { sub(/^\/\//, "///") }
{ print }
