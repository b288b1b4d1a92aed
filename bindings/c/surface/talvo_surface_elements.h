#ifndef TALVO_SURFACE_ELEMENTS_H
#define TALVO_SURFACE_ELEMENTS_H

/*
 * The banner as assistive technology sees it: everything that the user can read or operate. Main thread only.
 */

#include "talvo_surface.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What an element is. Later versions may add roles. */
typedef int talvo_role;
enum {
  TALVO_ROLE_NONE = 0,
  TALVO_ROLE_TEXT = 1,
  TALVO_ROLE_HEADING = 2,
  TALVO_ROLE_IMAGE = 3,
  TALVO_ROLE_BUTTON = 4,
  TALVO_ROLE_LINK = 5,
  TALVO_ROLE_TOGGLE = 6,
  TALVO_ROLE_EXPANDER = 7,
  TALVO_ROLE_DIALOG = 8
};

/* What assistive technology can do with an element; the values are bits. */
typedef uint32_t talvo_action;
enum {
  TALVO_ACTION_ACTIVATE = 1, /* press a button, switch a switch, open or close an expander */
  TALVO_ACTION_FOCUS = 2,    /* give it the keyboard focus and scroll it into view */
  TALVO_ACTION_REVEAL = 4    /* scroll it into view */
};

/* Later versions may add fields at the end. No text is null. */
typedef struct talvo_element {
  uint64_t id; /* the same for as long as the element is there */
  talvo_role role;
  uint32_t actions; /* the bits of talvo_action that it has */
  const char* name;
  const char* value; /* "on" or "off" for a switch, "expanded" or "collapsed" for an expander */
  const char* description;
  const char* language; /* of the name: talvo_cookies_set_language's, or that of the library's own texts */

  /* In pixels. For a control, the area that can be touched. May be scrolled out of sight. */
  double x;
  double y;
  double width;
  double height;

  int is_enabled;
  int is_focused;
  int is_modal;
} talvo_element;

/*
 * Sets `elements` to an array of pointers to the elements, in reading order, and `count` to their number.
 * Both are valid until the next call of this function for the surface, or until the surface is destroyed.
 */
TALVO_API talvo_status talvo_surface_elements(talvo_surface* surface, const talvo_element* const** elements,
                                              size_t* count);

/* Grows whenever the elements may have changed. 0 on failure. */
TALVO_API uint64_t talvo_surface_elements_revision(talvo_surface* surface);

/* Performs one action. Returns 0 if there is no such element, or if it does not have this action. */
TALVO_API int talvo_surface_perform(talvo_surface* surface, uint64_t element, talvo_action action);

#ifdef __cplusplus
}
#endif

#endif
