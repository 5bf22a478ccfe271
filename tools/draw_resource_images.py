#!/usr/bin/env python3
"""Draws the extra bundle's images into Resources/.

Python 3 standard library only. The menu-bar glyphs are small vector PDFs
(black shapes, used as template images); the other images are PNGs and one
uncompressed TIFF, rasterised here with 4x4 supersampling. The output is
deterministic, so running the script again changes nothing.

    python3 tools/draw_resource_images.py [output-folder] [--preview folder]

--preview also writes each raster image enlarged 8 times, to look at.
"""

import math
import os
import struct
import sys
import zlib

SUPERSAMPLING = 4

# ---------------------------------------------------------------- shapes
# A shape is a function (x, y) -> bool in pixel coordinates, y growing down.


def circle(cx, cy, r):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def ellipse(cx, cy, rx, ry):
    return lambda x, y: ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2 <= 1.0


def ring(cx, cy, r, width):
    inner = r - width
    return lambda x, y: inner * inner <= (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def rect(x0, y0, x1, y1):
    return lambda x, y: x0 <= x <= x1 and y0 <= y <= y1


def rounded_rect(x0, y0, x1, y1, r):
    def inside(x, y):
        if not (x0 <= x <= x1 and y0 <= y <= y1):
            return False
        cx = min(max(x, x0 + r), x1 - r)
        cy = min(max(y, y0 + r), y1 - r)
        return (x - cx) ** 2 + (y - cy) ** 2 <= r * r
    return inside


def polygon(points):
    def inside(x, y):
        result = False
        j = len(points) - 1
        for i, (xi, yi) in enumerate(points):
            xj, yj = points[j]
            if (yi > y) != (yj > y) and x < (xj - xi) * (y - yi) / (yj - yi) + xi:
                result = not result
            j = i
        return result
    return inside


def arc_stroke(cx, cy, r, width, start_degrees, end_degrees):
    """A thick arc; angles counter-clockwise from the x axis on screen."""
    def inside(x, y):
        d = math.hypot(x - cx, y - cy)
        if abs(d - r) > width / 2:
            return False
        angle = math.degrees(math.atan2(cy - y, x - cx)) % 360
        return start_degrees <= angle <= end_degrees
    return inside


def union(*shapes):
    return lambda x, y: any(s(x, y) for s in shapes)


def minus(shape, hole):
    return lambda x, y: shape(x, y) and not hole(x, y)


# ---------------------------------------------------------------- raster


def rasterise(width, height, layers):
    """layers: (shape, (r, g, b, a)) painted in order, source over. Answers RGBA rows."""
    rows = []
    n = SUPERSAMPLING
    for py in range(height):
        row = bytearray()
        for px in range(width):
            acc = [0.0, 0.0, 0.0, 0.0]  # premultiplied
            for sy in range(n):
                for sx in range(n):
                    x, y = px + (sx + 0.5) / n, py + (sy + 0.5) / n
                    r = g = b = a = 0.0
                    for shape, (lr, lg, lb, la) in layers:
                        if shape(x, y):
                            la /= 255.0
                            r = lr / 255.0 * la + r * (1 - la)
                            g = lg / 255.0 * la + g * (1 - la)
                            b = lb / 255.0 * la + b * (1 - la)
                            a = la + a * (1 - la)
                    acc[0] += r
                    acc[1] += g
                    acc[2] += b
                    acc[3] += a
            samples = n * n
            alpha = acc[3] / samples
            if alpha > 0:
                pixel = [round(255 * acc[i] / samples / alpha) for i in range(3)]
            else:
                pixel = [0, 0, 0]
            row += bytes(pixel + [round(255 * alpha)])
        rows.append(bytes(row))
    return rows


def png_bytes(width, height, rows):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    raw = b"".join(b"\x00" + row for row in rows)
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)  # 8-bit RGBA
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9))
            + chunk(b"IEND", b""))


def tiff_bytes(width, height, rows):
    """Little-endian, uncompressed, one strip of 8-bit RGBA with unassociated alpha."""
    pixels = b"".join(rows)
    entries = 14
    ifd_offset = 8
    extra_offset = ifd_offset + 2 + entries * 12 + 4
    bits_offset = extra_offset            # four SHORTs
    xres_offset = bits_offset + 8         # RATIONAL
    yres_offset = xres_offset + 8         # RATIONAL
    data_offset = yres_offset + 8
    SHORT, LONG, RATIONAL = 3, 4, 5

    def entry(tag, kind, count, value):
        if kind == SHORT and count == 1:
            return struct.pack("<HHIHH", tag, kind, count, value, 0)
        return struct.pack("<HHII", tag, kind, count, value)

    ifd = struct.pack("<H", entries) + b"".join([
        entry(256, SHORT, 1, width),
        entry(257, SHORT, 1, height),
        entry(258, SHORT, 4, bits_offset),
        entry(259, SHORT, 1, 1),            # no compression
        entry(262, SHORT, 1, 2),            # RGB
        entry(273, LONG, 1, data_offset),
        entry(277, SHORT, 1, 4),
        entry(278, SHORT, 1, height),
        entry(279, LONG, 1, len(pixels)),
        entry(282, RATIONAL, 1, xres_offset),
        entry(283, RATIONAL, 1, yres_offset),
        entry(284, SHORT, 1, 1),            # chunky
        entry(296, SHORT, 1, 2),            # inch
        entry(338, SHORT, 1, 2),            # unassociated alpha
    ]) + struct.pack("<I", 0)
    extra = struct.pack("<4H", 8, 8, 8, 8) + struct.pack("<II", 72, 1) * 2
    return b"II*\x00" + struct.pack("<I", ifd_offset) + ifd + extra + pixels


def enlarged_png(width, height, rows, factor=8):
    big = []
    for row in rows:
        pixels = [row[i:i + 4] for i in range(0, len(row), 4)]
        # Over a light checkerboard-free grey so transparency shows.
        line = bytearray()
        for p in pixels:
            a = p[3] / 255.0
            composite = bytes(round(p[i] * a + 200 * (1 - a)) for i in range(3)) + b"\xff"
            line += composite * factor
        big.extend([bytes(line)] * factor)
    return png_bytes(width * factor, height * factor, big)


# ---------------------------------------------------------------- vector PDF


def ellipse_path(cx, cy, rx, ry, clockwise=False):
    """Four Bezier quarter arcs, in PDF coordinates (y up)."""
    k = 0.5522847498
    quarter = [
        ((cx + rx, cy), (cx + rx, cy + k * ry), (cx + k * rx, cy + ry), (cx, cy + ry)),
        ((cx, cy + ry), (cx - k * rx, cy + ry), (cx - rx, cy + k * ry), (cx - rx, cy)),
        ((cx - rx, cy), (cx - rx, cy - k * ry), (cx - k * rx, cy - ry), (cx, cy - ry)),
        ((cx, cy - ry), (cx + k * rx, cy - ry), (cx + rx, cy - k * ry), (cx + rx, cy)),
    ]
    if clockwise:
        quarter = [(d, c2, c1, a) for (a, c1, c2, d) in reversed(quarter)]
    ops = ["%.3f %.3f m" % quarter[0][0]]
    for _, c1, c2, end in quarter:
        ops.append("%.3f %.3f %.3f %.3f %.3f %.3f c" % (c1 + c2 + end))
    ops.append("h")
    return ops


def polygon_path(points):
    ops = ["%.3f %.3f m" % points[0]] + ["%.3f %.3f l" % p for p in points[1:]] + ["h"]
    return ops


def rect_path(x0, y0, x1, y1, clockwise=False):
    points = [(x0, y0), (x1, y0), (x1, y1), (x0, y1)]
    return polygon_path(list(reversed(points)) if clockwise else points)


def pdf_bytes(width, height, content_ops):
    content = ("0 0 0 rg\n" + "\n".join(content_ops) + "\nf\n").encode("ascii")
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        ("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 %g %g] /Resources << >> /Contents 4 0 R >>"
         % (width, height)).encode("ascii"),
        b"<< /Length %d >>\nstream\n" % len(content) + content + b"endstream",
    ]
    out = bytearray(b"%PDF-1.4\n")
    offsets = []
    for number, body in enumerate(objects, start=1):
        offsets.append(len(out))
        out += b"%d 0 obj\n" % number + body + b"\nendobj\n"
    xref = len(out)
    out += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    for offset in offsets:
        out += b"%010d 00000 n \n" % offset
    out += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, xref)
    return bytes(out)


# The menu-bar glyph: an 18 x 16 point speech bubble (an ellipse with a tail
# at the lower left). Outer shapes wind counter-clockwise; holes clockwise, so
# the nonzero fill rule cuts them out.
GLYPH_SIZE = (18, 16)


def bubble_ops():
    return ellipse_path(9.5, 9.5, 8.0, 6.0) + polygon_path([(2.5, 0.5), (8.0, 5.0), (4.5, 6.5)])


def glyph_available():
    return bubble_ops()


def glyph_away():
    return bubble_ops() + rect_path(5.5, 8.5, 13.5, 10.5, clockwise=True)


def glyph_alert():
    return bubble_ops() + rect_path(8.6, 9.0, 10.4, 14.0, clockwise=True) + rect_path(
        8.6, 5.6, 10.4, 7.4, clockwise=True)


# ---------------------------------------------------------------- raster images

GREEN = (52, 168, 83, 255)
YELLOW = (240, 190, 40, 255)
RED = (214, 60, 50, 255)
GREY = (140, 140, 140, 255)
DARK = (40, 40, 40, 255)
SCREEN_BLUE = (90, 150, 230, 255)


def status_dot(colour):
    return 12, 12, [(circle(6, 6, 5), colour), (ring(6, 6, 5, 0.8), (0, 0, 0, 70))]


def status_offline():
    return 12, 12, [(ring(6, 6, 5, 1.4), GREY)]


def status_invisible():
    # A dashed ring: every other sixth of the circle.
    def dashed(x, y):
        if not ring(6, 6, 5, 1.6)(x, y):
            return False
        angle = math.degrees(math.atan2(y - 6, x - 6)) % 360
        return int(angle // 30) % 2 == 0
    return 12, 12, [(dashed, (110, 110, 110, 255))]


def sharing_active():
    monitor = rounded_rect(1, 1, 17, 12, 1.5)
    screen = rect(2.5, 2.5, 15.5, 10.5)
    stand = union(rect(7.5, 12, 10.5, 14), rect(5, 14, 13, 15))
    return 18, 16, [(monitor, DARK), (screen, SCREEN_BLUE), (stand, DARK)]


def camera(colour):
    body = rounded_rect(1, 4, 11, 12, 1.5)
    lens = polygon([(10, 6.5), (15, 4), (15, 12), (10, 9.5)])
    return 16, 16, [(union(body, lens), colour)]


def handset(colour):
    band = arc_stroke(8, 11, 6.5, 2.6, 20, 160)
    ear = circle(2.6, 8.6, 2.3)
    mouth = circle(13.4, 8.6, 2.3)
    return 16, 16, [(union(band, ear, mouth), colour)]


RASTER_IMAGES = {
    "SharingActive.png": sharing_active,
    "status-invisible-flat.tif": status_invisible,
    "menu-video.png": lambda: camera(GREEN),
    "menu-video_busy.png": lambda: camera(GREY),
    "menu-audio.png": lambda: handset(GREEN),
    "menu-audio_busy.png": lambda: handset(GREY),
    "status-available.png": lambda: status_dot(GREEN),
    "status-idle.png": lambda: status_dot(YELLOW),
    "status-away.png": lambda: status_dot(RED),
    "status-offline.png": status_offline,
}

PDF_IMAGES = {
    "MenuExtra.pdf": glyph_available,
    "MenuExtra-.pdf": glyph_away,
    "MenuExtra!.pdf": glyph_alert,
}


def main(argv):
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    args = list(argv[1:])
    preview = None
    if "--preview" in args:
        at = args.index("--preview")
        preview = args[at + 1]
        del args[at:at + 2]
        os.makedirs(preview, exist_ok=True)
    output = args[0] if args else os.path.join(root, "Resources")
    os.makedirs(output, exist_ok=True)

    for name, draw in PDF_IMAGES.items():
        with open(os.path.join(output, name), "wb") as f:
            f.write(pdf_bytes(GLYPH_SIZE[0], GLYPH_SIZE[1], draw()))

    for name, draw in RASTER_IMAGES.items():
        width, height, layers = draw()
        rows = rasterise(width, height, layers)
        data = tiff_bytes(width, height, rows) if name.endswith(".tif") else png_bytes(width, height, rows)
        with open(os.path.join(output, name), "wb") as f:
            f.write(data)
        if preview:
            with open(os.path.join(preview, os.path.splitext(name)[0] + ".png"), "wb") as f:
                f.write(enlarged_png(width, height, rows))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
