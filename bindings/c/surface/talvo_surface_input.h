#ifndef TALVO_SURFACE_INPUT_H
#define TALVO_SURFACE_INPUT_H

/*
 * The user's input on a surface. Each function returns 1 if the banner took the input. If it returns 0, the
 * input is for the host. A touch, a mouse button or a stick that began outside the banner stays with the host
 * until it ends. A key that the host received does not operate the banner while it is held, and the host
 * receives its release. Positions are finite and in pixels, from the top left of the surface. Main thread
 * only.
 */

#include "talvo_surface.h"

#ifdef __cplusplus
extern "C" {
#endif

/* `finger` is any number that stays the same until the finger is lifted. */
TALVO_API int talvo_surface_touch_began(talvo_surface* surface, int64_t finger, double x, double y);
TALVO_API int talvo_surface_touch_moved(talvo_surface* surface, int64_t finger, double x, double y);
TALVO_API int talvo_surface_touch_ended(talvo_surface* surface, int64_t finger, double x, double y);
TALVO_API int talvo_surface_touch_cancelled(talvo_surface* surface, int64_t finger);

typedef int talvo_mouse_button;
enum {
  TALVO_MOUSE_LEFT = 0,
  TALVO_MOUSE_RIGHT = 1,
  TALVO_MOUSE_MIDDLE = 2,
  TALVO_MOUSE_OTHER = 3 /* and any other number */
};

TALVO_API int talvo_surface_mouse_moved(talvo_surface* surface, double x, double y);
TALVO_API int talvo_surface_mouse_pressed(talvo_surface* surface, talvo_mouse_button button, double x,
                                          double y);
TALVO_API int talvo_surface_mouse_released(talvo_surface* surface, talvo_mouse_button button, double x,
                                           double y);

/* Scrolls down by `pixels`, as trackpads report it, or by notches of a wheel; up if they are negative. */
TALVO_API int talvo_surface_scrolled(talvo_surface* surface, double x, double y, double pixels);
TALVO_API int talvo_surface_wheel_turned(talvo_surface* surface, double x, double y, double notches);

/* Keys of a keyboard, and buttons of a remote control or a game controller. */
typedef int talvo_key;
enum {
  TALVO_KEY_OTHER = 0, /* any key that is not listed here, and any other number */
  TALVO_KEY_TAB = 1,
  TALVO_KEY_BACKTAB = 2,
  TALVO_KEY_SPACE = 3,
  TALVO_KEY_ENTER = 4,
  TALVO_KEY_ESCAPE = 5, /* also the Back key of a phone */
  TALVO_KEY_UP = 6,
  TALVO_KEY_DOWN = 7,
  TALVO_KEY_PAGE_UP = 8,
  TALVO_KEY_PAGE_DOWN = 9,
  TALVO_KEY_HOME = 10,
  TALVO_KEY_END = 11,
  TALVO_PAD_UP =
      12, /* the arrows, like the D-pad, move the focus to the nearest control in their direction */
  TALVO_PAD_DOWN = 13,
  TALVO_PAD_LEFT = 14,
  TALVO_PAD_RIGHT = 15,
  TALVO_PAD_ACCEPT = 16,
  TALVO_PAD_CANCEL = 17,
  TALVO_KEY_LEFT = 18,
  TALVO_KEY_RIGHT = 19
};

/*
 * For a key that is held down, call talvo_surface_key_pressed for each repetition. The host receives the
 * releases of all keys that are TALVO_KEY_OTHER, because they cannot be told apart.
 */
TALVO_API int talvo_surface_key_pressed(talvo_surface* surface, talvo_key key);
TALVO_API int talvo_surface_key_released(talvo_surface* surface, talvo_key key);

/* The sticks of a controller: the left one moves the focus as the D-pad does, the right one scrolls. */
typedef int talvo_stick;
enum { TALVO_STICK_LEFT = 0, TALVO_STICK_RIGHT = 1 };

/* The position of a stick, each direction from -1 to 1, y downwards. Call it when the position changes. */
TALVO_API int talvo_surface_stick_moved(talvo_surface* surface, talvo_stick stick, double x, double y);

#ifdef __cplusplus
}
#endif

#endif
