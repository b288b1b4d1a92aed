#ifndef TALVO_SURFACE_OPTIONS_H
#define TALVO_SURFACE_OPTIONS_H

/*
 * What a host gives a surface: settings, fonts and callbacks. All callbacks are called on the main thread.
 *
 * A structure of zeros, apart from `size`, has the defaults. Later versions may add fields at the end; `size`
 * says which fields the host knows.
 */

#include <stddef.h>
#include <stdint.h>

#include "talvo_consent.h"

typedef int talvo_direction;
enum {
  TALVO_DIRECTION_OF_TEXT = 0, /* that of the banner's texts */
  TALVO_LEFT_TO_RIGHT = 1,
  TALVO_RIGHT_TO_LEFT = 2
};

/* The user's settings. They may change while a banner is shown. */
typedef struct talvo_surface_settings {
  size_t size; /* sizeof(talvo_surface_settings) */

  /* The language of the banner as a BCP 47 tag, used to shape text and break lines. It is not taken from the
   * client: set it to what you pass to talvo_cookies_set_language. May be null. */
  const char* language;

  double text_scale; /* multiplies every font size, from 1 to about 3; 0 for 1 */

  /* What the system's bars and notches cover, in points. Left is left in right-to-left layouts, too. */
  double safe_area_top;
  double safe_area_left;
  double safe_area_bottom;
  double safe_area_right;

  talvo_direction direction; /* of the whole banner */
  int high_contrast;
  int reduces_motion;
  int reserved; /* 0 */
} talvo_surface_settings;

/*
 * A font file: TrueType, OpenType or a collection of them; variable fonts and colour fonts, too. `bytes` is
 * the content of a font file. If it is null, the file at `path` is read. This structure never changes.
 */
typedef struct talvo_font {
  const char* path;
  const void* bytes;
  size_t length; /* of `bytes` */
} talvo_font;

/* Returns whether the host is in the foreground (not 0). Called when a banner is to be shown: if it returns
 * 0, that is not shown, and `on_error` receives TALVO_NOT_SHOWN. */
typedef int (*talvo_foreground_callback)(void* user_data);

/* Opens a URL outside the host. */
typedef void (*talvo_url_callback)(const char* url, void* user_data);

/*
 * Finds where a line may begin in a text of `length` bytes whose words are not separated by blanks (Thai,
 * Lao, Khmer, Burmese), for which a dictionary is needed. Writes the positions, in bytes and ascending, to
 * `positions`, which has room for `length` of them, and returns their number. It must not call the surface.
 */
typedef size_t (*talvo_line_break_callback)(const char* text, size_t length, const char* language,
                                            size_t* positions, void* user_data);

/* How a surface is made. Any pointer may be null, and any callback, too. */
typedef struct talvo_surface_options {
  size_t size; /* sizeof(talvo_surface_options) */
  const talvo_surface_settings* settings;

  double scale;   /* the number of pixels in a point, which is the display's scale; from 0.1 to 16; 0 for 1 */
  int32_t width;  /* in pixels, at most 16384; on a surface without an area, no banner is shown */
  int32_t height; /* the same */

  /* In order of preference: each letter is drawn with the first font that has it, in the weight nearest to
   * the one wanted. A font that cannot be read is left out, and one line is printed. On Linux, fontconfig
   * finds what the fonts lack, unless `without_system_fonts` is set. */
  const talvo_font* fonts;
  size_t font_count;
  int without_system_fonts;

  int32_t max_texture_size; /* the largest width and height of a texture, at least 512; 0 for 2048 */

  talvo_foreground_callback is_in_foreground; /* if null, the host always is */
  talvo_url_callback open_url;                /* if null, nothing is opened, and one line is printed */
  talvo_callback on_needs_frame; /* talvo_surface_needs_frame returns 1 again; may only destroy the surface */
  talvo_line_break_callback break_lines; /* if null, lines in these scripts end between any two characters */
  void* user_data;                       /* for all of these callbacks */
  talvo_callback release; /* called once the surface is destroyed; none of the others is called after it */
} talvo_surface_options;

#endif
