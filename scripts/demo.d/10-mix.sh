# SPDX-License-Identifier: Apache-2.0
# Mixes the recordings one after another, each a little later and with another gain, into three kinds of file.
# Uses: marlo, output, recordings.
# shellcheck shell=bash disable=SC2154

echo "== Mixing ${#recordings[@]} recordings"
inputs=()
gains=(0dB -3dB -6dB -9dB)
for index in "${!recordings[@]}"; do
  # Each begins 0.8 seconds after the one before.
  start=$((index * 8 / 10)).$((index * 8 % 10))
  gain=${gains[index % ${#gains[@]}]}
  inputs+=("${recordings[index]}@$start:$gain")
  echo "   $(basename "${recordings[index]}") from second $start on, gain $gain"
done
for kind in wav w64 aiff; do
  "$marlo" mix "$output/mix.$kind" "${inputs[@]}"
done

echo
echo "== What was made"
"$marlo" info "$output/mix.wav" "$output/mix.w64" "$output/mix.aiff"

echo
echo "== How loud it is"
"$marlo" level "$output/mix.wav"

echo
echo "The recordings were summed as doubles, each from its own start and with its own gain, and converted once into the"
echo "sample type of the first. The Wave file can hold 4 GiB, the Wave64 file as much as the disk, and the AIFF file has"
echo "the same samples in big-endian order. All three are in ${output#"$PWD"/}."
