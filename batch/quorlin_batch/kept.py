"""An output as it is kept: whole up to a bound, then its beginning and its end."""

MAX_PART = 512 << 10  # bytes of the beginning, and of the end


class Kept:
    """Takes an output of any size in pieces."""

    def __init__(self) -> None:
        self.head = bytearray()
        self.tail = bytearray()
        self.left_out = 0  # bytes between the two
        self.lines_left_out = 0

    def add(self, data: bytes) -> None:
        room = MAX_PART - len(self.head)
        if room > 0:
            self.head += data[:room]
            data = data[room:]
        if data:
            self.tail += data
            if len(self.tail) > 2 * MAX_PART:
                self.shorten()

    def shorten(self) -> None:
        """Drops whole lines, so far as there are any."""
        end = self.tail.find(b"\n", len(self.tail) - MAX_PART) + 1 or len(self.tail) - MAX_PART
        self.left_out += end
        self.lines_left_out += self.tail.count(b"\n", 0, end)
        del self.tail[:end]

    def content(self) -> bytes:
        if len(self.tail) > MAX_PART:
            self.shorten()
        if not self.left_out:
            return bytes(self.head + self.tail)
        gap = f"\n[{self.lines_left_out} lines, {self.left_out} bytes, are left out here]\n"
        return bytes(self.head) + gap.encode() + bytes(self.tail)
