#!/usr/bin/env python3
"""For each kind of wrong use, adds an #include or a declaration that breaks a rule to a copy of the sources, and checks
that scripts/check-includes finds it.

  tests/IncludesTest.py TREE
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

WRONG = """
TalvoConsentSDK/base/Error.h         #include "TalvoConsentSDK/platform/Printer.h"
TalvoConsentSDK/platform/Window.h    class HostingController;
TalvoConsentSDK/view/Layout.cpp      #include "TalvoConsentSDK/models/Services.h"
TalvoConsentSDK/view/Layout.h        struct FullConsent;
TalvoConsentSDK/models/Services.h    #include "TalvoConsentSDK/platform/URLSession.h"
TalvoConsentSDK/network/APIClient.h  #include "TalvoConsentSDK/storage/ConsentStorage.h"
TalvoConsentSDK/network/APIClient.h  #include "TalvoConsentSDK/models/json/JSONNode.h"
TalvoConsentSDK/ui/Palette.h         #include "TalvoConsentSDK/network/APIClient.h"
TalvoConsentSDK/core/CookiesSDK.h    #include "TalvoConsentSDK/view/Views.h"
TalvoConsentSDK/core/CookiesSDK.cpp  #include "adapters/curl/CurlURLSession.h"
TalvoConsentSDK/core/CookiesSDK.cpp  #include <curl/curl.h>
TalvoConsentSDK/core/CookiesSDK.h    #include <simdjson.h>
adapters/curl/CurlHeader.cpp         #include "adapters/sqlite/StoreFile.h"
adapters/curl/CurlHeader.h           class StoreConnection;
adapters/sqlite/StoreFile.cpp        #include "TalvoConsentSDK/models/FullConsent.h"
adapters/draw/FontSet.cpp            #include "adapters/qt/QtText.h"
adapters/gles/GLESRenderer.h         #include "adapters/draw/ConsentSurface.h"
adapters/sdl/SDLInput.cpp            #include "adapters/threads/MainQueue.h"
bindings/gles/TalvoGLES.cpp          #include "adapters/draw/ConsentSurface.h"
adapters/qt/ViewWindow.cpp           #include "adapters/curl/CurlURLSession.h"
adapters/threads/MainQueue.cpp       #include "adapters/posix/PosixPlatform.h"
adapters/cache/CacheRules.cpp        #include "adapters/threads/BackgroundThread.h"
adapters/sqlite/SQLiteCacheStorage.h #include "adapters/cache/CacheRules.h"
adapters/texts/TranslatedTexts.cpp   #include "TalvoConsentSDK/view/TextDirection.h"
bindings/c/Boundary.cpp              #include "adapters/curl/CurlURLSession.h"
bindings/c/surface/Surface.cpp       #include "adapters/posix/PosixPlatform.h"
testing/LoopbackServer.cpp           #include "adapters/curl/CurlURLSession.h"
apps/host/Script.cpp                 #include "TalvoConsentSDK/models/json/JSONNode.h"
"""


def main():
    root = pathlib.Path(sys.argv[1])
    missed = []
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder)
        for part in ("TalvoConsentSDK", "adapters", "bindings", "apps", "testing"):
            shutil.copytree(root / part, copy / part)

        def check():
            return subprocess.run([root / "scripts/check-includes", copy], capture_output=True, text=True)

        if check().returncode != 0:
            missed.append("nothing is wrong, but something is found")
        for row in WRONG.strip().splitlines():
            path, line = row.split(maxsplit=1)
            file = copy / path
            before = file.read_text()
            file.write_text(before + "\n" + line + "\n")
            found = check()
            if found.returncode != 1 or f": {line}\n" not in found.stdout:
                missed.append(f"not found: {row}")
            file.write_text(before)
    print("\n".join(missed))
    return bool(missed)


sys.exit(main())
