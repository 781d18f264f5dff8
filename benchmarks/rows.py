"""The rows of the bench table: which measured benchmark stands against which, and what is aimed at.

A row's value is the median of its benchmark's real time unless `counter` names one of its counters
instead; its ratio is that value over the same of the benchmark it stands against, both from one run.
"""

from dataclasses import dataclass


@dataclass(frozen=True)
class Row:
    name: str
    benchmark: str
    against: str | None = None
    counter: str | None = None
    unit: str = "us"
    aim: str = ""


WALLPAPERS = [
    "builtin.elec-pcb", "builtin.elec-oscilloscope", "builtin.smoke", "builtin.nebula-orion",
    "builtin.nebula-milky-way", "builtin.planet-jupiter", "builtin.topo-contours",
    "builtin.topo-contours-dark", "builtin.topo-isometric", "aurora", "plasma",
]

# Sizes of compiled wallpapers, and the aims for their time.
COMPILED = {"1k": 0.3, "4k": 0.4, "21k": 0.5}

ROWS = [
    *[Row(f"compile a wallpaper of {size}B, warm", f"msl/compile_{size}/ours_warm",
          against=f"msl/compile_{size}/glslang_warm", aim=f"ratio <= {aim}")
      for size, aim in COMPILED.items()],
    *[Row(f"compile a wallpaper of {size}B, first in process", f"msl/compile_{size}/ours_first",
          against=f"msl/compile_{size}/glslang_first", aim="ratio <= 0.02") for size in COMPILED],
    *[Row(f"heap allocations of compiling {size}B", f"msl/compile_{size}/ours_warm",
          against=f"msl/compile_{size}/glslang_warm", counter="allocations", unit="count",
          aim="ratio <= 0.1") for size in COMPILED],
    *[Row(f"size of the module of {size}B", f"msl/compile_{size}/ours_warm",
          against=f"msl/compile_{size}/glslang_warm", counter="words", unit="words")
      for size in COMPILED],
    Row("compile a source of 200 kB, per kB", "msl/long_200k", against="msl/long_20k",
        counter="us_per_kb", aim="ratio <= 1.25"),
    Row("main-thread CPU per frame, trivial shader", "frame/trivial/ours",
        against="frame/trivial/bare", aim="value <= 60 us"),
    Row("own heap allocations per steady frame", "frame/trivial/ours", counter="allocations",
        unit="count", aim="value <= 0"),
    *[Row(f"frame of {name}, 1280x720", f"wallpaper/{name}/ours",
          against=f"wallpaper/{name}/{road}", aim="ratio <= 1.0")
      for name in WALLPAPERS for road in ("glslang", "glslang_opt")],
    *[Row(f"frame of {name}, 640x360", f"wallpaper/{name}/640x360",
          against="wallpaper/plasma/640x360",
          aim="ratio <= 40" if name == "builtin.elec-pcb" else "ratio <= 10")
      for name in WALLPAPERS if name != "plasma"],
    # Nine times the pixels, and a little for what caches no longer hold.
    *[Row(f"frame of {name}, 1920x1080", f"wallpaper/{name}/1920x1080",
          against=f"wallpaper/{name}/640x360", aim="ratio <= 9.5") for name in WALLPAPERS],
    Row("frame through the whole road, 1920x1080", "road/whole", against="road/offscreen",
        aim="ratio <= 1.15"),
    Row("compositing a hosted frame, 1920x1080", "composite/ours", against="composite/copy",
        aim="ratio <= 1.3"),
    *[Row(f"a frame of each of {count} surfaces, one's share", f"surfaces/{count}",
          against="surfaces/1", aim="ratio <= 1.1") for count in (4, 16, 64)],
    Row("first frame of a surface, pipeline warmed", "first/warmed", against="first/steady",
        aim="ratio <= 1.15"),
    Row("wake-ups of a paused surface in 2 s", "paused", counter="wakeups", unit="count",
        aim="value <= 0"),
    Row("CPU of a paused surface in 2 s", "paused", counter="cpu_us"),
    Row("GPU start-up of a process", "startup/ours", against="startup/bare",
        aim="ratio <= 1.05"),
    Row("first picture of a process, warm caches", "picture/warm", against="picture/cold"),
    Row("encode the picker's view models", "bridge/encode_picker/ours",
        against="bridge/encode_picker/libplist", aim="ratio <= 0.25"),
    Row("encode the picker's view models", "bridge/encode_picker/ours",
        against="bridge/encode_picker/gnustep"),
    Row("encode the picker's view models", "bridge/encode_picker/ours",
        against="bridge/encode_picker/plistlib"),
    Row("heap allocations per encode of the picker", "bridge/encode_picker/ours",
        counter="allocations", unit="count", aim="value <= 1708"),
    Row("bytes of the encoded picker", "bridge/encode_picker/ours", counter="bytes", unit="bytes",
        against="bridge/picker_bytes/gnustep", aim="ratio <= 1.0"),
    Row("decode a creation request", "bridge/decode_request/ours",
        against="bridge/decode_request/libplist", aim="ratio <= 0.4"),
    Row("decode a creation request", "bridge/decode_request/ours",
        against="bridge/decode_request/gnustep"),
    Row("decode a creation request", "bridge/decode_request/ours",
        against="bridge/decode_request/plistlib"),
    Row("view models, every thumbnail there", "library/view_models/cached", aim="value <= 1000 us"),
    Row("view models, first of all", "library/view_models/first",
        against="library/view_models/draws", aim="ratio <= 1.5"),
    Row("from a change's notification to its picture", "change/plasma/shown",
        against="change/plasma/frame"),
    Row("round trip of a trivial call", "service/round_trip/ours",
        against="service/round_trip/bare", aim="ratio <= 1.15"),
    Row("acquire, pipeline cached", "service/acquire", against="service/frame_and_call",
        aim="ratio <= 1.5"),
    Row("start of the extension to its first answer", "service/launch", against="startup/bare",
        aim="ratio <= 1.5"),
    *[Row(f"requests a second, {count} connections", f"service/requests/{count}",
          counter="requests_a_second", unit="/s") for count in (1, 8, 64)],
    # Both processes together.
    Row("CPU of a running trivial wallpaper on a desktop, per cent of a core",
        "desktop/running/ours", against="desktop/running/straight", counter="percent_of_a_core",
        unit="%", aim="ratio <= 1.5"),
    Row("the same, beside a program that does not clear first",
        "desktop/running/ours", against="desktop/running/straight_without_clear",
        counter="percent_of_a_core", unit="%"),
    Row("its frames a second", "desktop/running/ours", counter="frames_a_second", unit="/s"),
    Row("wake-ups of a paused desktop in 10 s", "desktop/paused", counter="wakeups", unit="count",
        aim="value <= 0"),
    Row("from the lock to the first moving frame", "desktop/lock"),
    Row("from a crash to the next picture", "desktop/crash"),
]

HOSTILE_LISTS = ["nested_binary", "nested_xml", "nested_text", "cycle", "shared_arrays", "shared_text",
                 "object_count", "offset_past_end", "two_gibibytes"]
for hostile in HOSTILE_LISTS:
    name = hostile.replace("_", " ")
    ROWS.append(Row(f"refuse a hostile list: {name}", f"hostile_list/{hostile}",
                    aim="value <= 50000 us"))
    ROWS.append(Row(f"peak memory of refusing: {name}", f"hostile_list/{hostile}",
                    counter="mebibytes", unit="MiB", aim="value <= 64"))
