#!/bin/bash
# usage: scripts/fetch_simdutf.sh [FOLDER]
#
# Puts a library that contains simdutf, the encoder's peer in bench/utf8_bench.cpp, into the folder
# of the built programs. Debian 12 has it only inside libnode108. That is unpacked, not installed: it
# would ask for a node.js that may not fit the one at hand. The packages it needs are in
# scripts/packages.txt, group bench.
set -euo pipefail

target=$(realpath "${1:-$(dirname "$0")/../build/linux/bin}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
apt-get -q download libnode108
dpkg-deb --extract libnode108_*.deb .
cp -L usr/lib/x86_64-linux-gnu/libnode.so.108 "$target/"
