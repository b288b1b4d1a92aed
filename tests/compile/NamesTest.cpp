// Compiles like a host that first includes the headers of a window system and then says "using namespace
// TalvoConsentSDK": the window system's names and macros stay usable without qualification.

// X11 declares these types, and defines these macros (X11/X.h, X11/Xlib.h).
typedef unsigned long XID;
typedef XID Window;
typedef XID Font;
typedef XID Drawable;
typedef struct {
  int ext_data;
} Visual, Screen, Display;
#define None 0L
#define Bool int
#define True 1
#define False 0
#define Success 0
#define Always 2

// Win32 declares RECT, POINT and these, and defines these macros (windef.h, wingdi.h); min and max are not
// here, as they break the standard library, too.
struct tagPOINT {
  long x, y;
};
#define near
#define far
#define interface struct
#define RGB(r, g, b) ((r) | ((g) << 8) | ((b) << 16))

// Carbon declares these (MacTypes.h, Quickdraw.h, Components.h).
struct Point {
  short v, h;
};
struct Rect {
  short top, left, bottom, right;
};
typedef struct {
  unsigned short red, green, blue;
} Color;
typedef struct ComponentRecord* Component;

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/view/HostingController.h"

#include "adapters/posix/PosixPlatform.h"
#include "adapters/threads/MainQueue.h"

using namespace TalvoConsentSDK;

namespace host {

struct Scene {
  Window window = None;
  Font font = None;
  Visual* visual = nullptr;
  Screen* screen = nullptr;
  Point origin = {};
  Rect frame = {};
  Color color = {};
  Component component = nullptr;
};

Bool isConsentGiven(const Scene& scene) {
  const std::optional<BasicConsent> consent = CookiesSDK::getInstance()->getConsent();
  return consent && scene.window != None ? True : False;
}

}  // namespace host
