#!/usr/bin/env python3
"""Uses the C interface as a host in another language does: shows the banner of the local consent service on a surface,
follows its draw lists as a renderer does, and taps the button that the accessible elements name.

  tests/bindings/SurfaceTest.py TREE LIBRARY SERVICE     LIBRARY: a shared library with the C interface
"""
import contextlib
import ctypes
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import time
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_int64, c_size_t, c_void_p

WIDTH, HEIGHT = 780, 1688
BUTTON, REVEAL, ALPHA8, NO_SURFACE = 4, 4, 0, 9


def structures(tree):
    """The structures that the headers define, as classes."""
    types = {name: getattr(ctypes, "c_" + name.removesuffix("_t")) for name in
             ("int", "long", "float", "double", "uint8_t", "int32_t", "uint32_t", "uint64_t")}
    types.update({"char*": c_char_p, "size_t": c_size_t})
    headers = [tree / "bindings/c/talvo_consent.h", *sorted((tree / "bindings/c/surface").glob("*.h"))]
    text = re.sub(r"/\*.*?\*/|\bconst\b", "", "".join(each.read_text() for each in headers), flags=re.S)
    types.update((name, types[number]) for number, name in re.findall(r"typedef (int|uint32_t) (\w+);", text))
    for name, body in re.findall(r"typedef struct (\w+) \{(.*?)\}", text, re.S):
        fields = []
        for kind, pointer, field, length in re.findall(r"(\w+)(\*?)\s+(\w+)(?:\[(\d+)\])?;", body):
            shape = types.get(kind + pointer) or (POINTER(types[kind]) if pointer and kind in types else c_void_p)
            fields.append((field, shape * int(length) if length else shape))
        types[name] = type(name, (ctypes.Structure,), {"_fields_": fields})
    return types


def check(drawn, sizes):
    """Checks what a renderer relies on. `sizes` maps textures to their sizes."""
    for upload in drawn.uploads[:drawn.upload_count]:
        size = sizes.setdefault(upload.texture, (upload.texture_width, upload.texture_height))
        assert size == (upload.texture_width, upload.texture_height), "a texture keeps its size"
        area, pixel = upload.area, 1 if upload.format == ALPHA8 else 4
        assert 0 <= area.x < area.x + area.width <= size[0] and 0 <= area.y < area.y + area.height <= size[1]
        ctypes.string_at(upload.bytes, upload.bytes_per_row * (area.height - 1) + area.width * pixel)
    for command in drawn.commands[:drawn.command_count]:
        clip, last = command.clip, command.first_index + command.index_count
        assert command.texture in sizes, "a texture is uploaded before it is drawn"
        assert 0 <= clip.x < clip.x + clip.width <= WIDTH and 0 <= clip.y < clip.y + clip.height <= HEIGHT
        assert last <= drawn.index_count and command.index_count % 3 == 0
        assert max(drawn.indices[command.first_index:last]) < drawn.vertex_count
    for texture in drawn.released[:drawn.released_count]:
        del sizes[texture]
    assert len(sizes) <= 2, "there is at most one texture of each format"


@contextlib.contextmanager
def running(service):
    with subprocess.Popen([service, "--port", "0"], stdout=subprocess.PIPE, text=True) as process:
        try:
            yield next(line.split()[-1] for line in process.stdout if line.startswith("listening on "))
        finally:
            process.terminate()


def test(types, talvo, url, store):
    talvo.talvo_last_error.restype = c_char_p
    talvo.talvo_cookies_create.restype = talvo.talvo_surface_create.restype = c_void_p
    talvo.talvo_surface_frame.restype = POINTER(types["talvo_draw_list"])
    calls, sizes, kept = [], {}, []

    def calling(call, *arguments):
        kept.append(ctypes.CFUNCTYPE(None, *arguments, c_void_p)(call))
        return ctypes.cast(kept[-1], c_void_p)

    def structure(name, **fields):
        return types[name](size=ctypes.sizeof(types[name]), **fields)

    def until(condition):
        end = time.monotonic() + 30
        while not condition():
            assert time.monotonic() < end, calls
            talvo.talvo_wait(5)
            talvo.talvo_drain()

    def frame():
        drawn = talvo.talvo_surface_frame(surface).contents
        check(drawn, sizes)
        return drawn

    def is_still():
        frame()
        return not talvo.talvo_surface_needs_frame(surface)

    def noting(name):
        return calling(lambda _: calls.append(name))

    failed = calling(lambda error, _: calls.append(error.contents.status), POINTER(types["talvo_error"]))
    banner = structure("talvo_banner_callbacks", on_accept_all=noting("accepted"), on_error=failed)
    assert talvo.talvo_install(str(store).encode(), None, None) == 0, talvo.talvo_last_error()
    client = c_void_p(talvo.talvo_cookies_create(url.encode(), b"demo"))
    assert talvo.talvo_cookies_show_banner(client, byref(banner)) == 0
    until(lambda: calls == [NO_SURFACE])

    settings = structure("talvo_surface_settings", language=b"ja")
    options = structure("talvo_surface_options", settings=ctypes.pointer(settings), scale=2, width=WIDTH,
                        height=HEIGHT, on_needs_frame=noting("needs frame"), release=noting("released"))
    surface = c_void_p(talvo.talvo_surface_create(byref(options)))
    assert surface, talvo.talvo_last_error()
    until(is_still)
    calls.clear()
    assert talvo.talvo_cookies_show_banner(client, byref(banner)) == 0
    until(lambda: talvo.talvo_surface_is_showing(surface))
    assert "needs frame" in calls
    until(is_still)
    drawn = frame()
    assert drawn.command_count > 0 and drawn.upload_count == 0, "a still banner is uploaded once"
    assert max(vertex.color[3] for vertex in drawn.vertices[:drawn.vertex_count]) == 255, "it has faded in"

    elements, count = POINTER(POINTER(types["talvo_element"]))(), c_size_t()
    assert talvo.talvo_surface_elements(surface, byref(elements), byref(count)) == 0
    accept = {(each.contents.role, each.contents.name): each.contents for each in elements[:count.value]}[
        BUTTON, b"Accept all"]
    assert accept.language == b"en", "the client's, not the surface's"
    assert accept.is_enabled and accept.actions & REVEAL
    place = c_double(accept.x + accept.width / 2), c_double(accept.y + accept.height / 2)
    assert talvo.talvo_surface_touch_began(surface, c_int64(1), *place)
    assert talvo.talvo_surface_touch_ended(surface, c_int64(1), *place)
    until(lambda: "accepted" in calls and is_still())
    assert frame().command_count == 0, "it has faded out"
    text = c_char_p()
    assert talvo.talvo_cookies_get_consent(client, byref(text)) == 0
    consent = json.loads(text.value)
    assert [consent[name] for name in ("preferences", "statistics", "marketing")] == [True] * 3, consent
    talvo.talvo_surface_destroy(surface)
    assert calls.count("released") == 1


def main():
    tree, library, service = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder, running(service) as url:
        test(structures(pathlib.Path(tree)), ctypes.CDLL(library), url, pathlib.Path(folder) / "consent.sqlite")


main()
