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


def chained(table, start, data, size):
    """The sectors of `size` bytes of `data` in the chain from `start`, put together."""
    pieces = []
    while start < END:
        assert len(pieces) <= len(table), "a chain runs in a circle"
        pieces.append(data[start * size:(start + 1) * size])
        start = table[start]
    return b"".join(pieces)


class Compound:
    def __init__(self, data):
        assert data[:8] == bytes.fromhex("d0cf11e0a1b11ae1"), "no compound file"
        self.size = 1 << struct.unpack_from("<H", data, 30)[0]
        self.mini_size = 1 << struct.unpack_from("<H", data, 32)[0]
        self.sectors = data[self.size:]
        directory, _, self.cutoff, first_mini, _, extra = struct.unpack_from("<6I", data, 48)
        tables = words(data[76:512])
        while extra < END:
            *more, extra = words(self.sectors[extra * self.size:(extra + 1) * self.size])
            tables += tuple(more)
        self.table = words(b"".join(chained({t: END}, t, self.sectors, self.size) for t in tables))
        self.mini_table = words(self.read(first_mini))
        directory = self.read(directory)
        self.entries = [directory[i:i + 128] for i in range(0, len(directory), 128)]
        self.mini_stream = self.read(struct.unpack_from("<I", self.entries[0], 116)[0])

    def read(self, start):
        return chained(self.table, start, self.sectors, self.size)

    def content(self, entry):
        start, size = struct.unpack_from("<IQ", entry, 116)
        if size >= self.cutoff:
            return self.read(start)[:size]
        if size == 0:
            return b""
        return chained(self.mini_table, start, self.mini_stream, self.mini_size)[:size]

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
    print("sector size", compound.size)
    print("class", uuid.UUID(bytes_le=root[80:96]))
    for name, entry in sorted(compound.walk(struct.unpack_from("<I", root, 76)[0], "")):
        kind = {1: "storage", 2: "stream"}[entry[66]]
        content = compound.content(entry) if kind == "stream" else b""
        print(kind, name, len(content), hashlib.sha256(content).hexdigest())


main()
