"""Prints what a compound file holds: sector size, class, and every stream with its bytes' digest.

    compound_contents.py FILE

A small reader of its own, from the published format, that shares nothing with either writer.
"""

import hashlib
import struct
import sys
import uuid

END = 0xFFFFFFFA  # this and above: no sector
NO_ENTRY = 0xFFFFFFFF


def words(data):
    return struct.unpack("<%dI" % (len(data) // 4), data)


def chain(table, start):
    seen = set()
    while start < END:
        assert start not in seen, "a chain runs in a circle"
        seen.add(start)
        yield start
        start = table[start]


class Compound:
    def __init__(self, data):
        assert data[:8] == bytes.fromhex("d0cf11e0a1b11ae1"), "no compound file"
        self.data = data
        self.sector_size = 1 << struct.unpack_from("<H", data, 30)[0]
        self.mini_size = 1 << struct.unpack_from("<H", data, 32)[0]
        first_directory, _, self.cutoff, first_mini, _, first_extra = struct.unpack_from(
            "<6I", data, 48)
        tables = list(words(data[76:512]))
        while first_extra < END:
            extra = words(self.sector(first_extra))
            tables += extra[:-1]
            first_extra = extra[-1]
        self.table = [w for t in tables if t < END for w in words(self.sector(t))]
        self.mini_table = words(self.read(first_mini))
        directory = self.read(first_directory)
        self.entries = [directory[i:i + 128] for i in range(0, len(directory), 128)]
        self.mini_stream = self.read(self.start(self.entries[0]))

    def sector(self, number):
        begin = (number + 1) * self.sector_size
        return self.data[begin:begin + self.sector_size]

    def read(self, start):
        return b"".join(self.sector(s) for s in chain(self.table, start))

    @staticmethod
    def start(entry):
        return struct.unpack_from("<I", entry, 116)[0]

    def content(self, entry):
        size = struct.unpack_from("<Q", entry, 120)[0]
        if size >= self.cutoff:
            return self.read(self.start(entry))[:size]
        pieces = chain(self.mini_table, self.start(entry)) if size else ()
        m = self.mini_size
        return b"".join(self.mini_stream[s * m:(s + 1) * m] for s in pieces)[:size]

    def walk(self, number, path):
        """Yields (path, entry) for an entry, its siblings and all beneath them."""
        if number == NO_ENTRY:
            return
        entry = self.entries[number]
        left, right, child = struct.unpack_from("<3I", entry, 68)
        length = struct.unpack_from("<H", entry, 64)[0]
        name = path + entry[:max(length - 2, 0)].decode("utf-16-le")
        yield from self.walk(left, path)
        yield name, entry
        yield from self.walk(child, name + "/")
        yield from self.walk(right, path)


def main():
    with open(sys.argv[1], "rb") as file:
        compound = Compound(file.read())
    root = compound.entries[0]
    print("sector size", compound.sector_size)
    print("class", uuid.UUID(bytes_le=root[80:96]))
    for name, entry in sorted(compound.walk(struct.unpack_from("<I", root, 76)[0], "")):
        kind = {1: "storage", 2: "stream"}[entry[66]]
        content = compound.content(entry) if kind == "stream" else b""
        print(kind, name, len(content), hashlib.sha256(content).hexdigest())


main()
