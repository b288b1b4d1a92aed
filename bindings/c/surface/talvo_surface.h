#ifndef TALVO_SURFACE_H
#define TALVO_SURFACE_H

/*
 * Shows the banner in the host's own frame, as draw lists, without a toolkit and without a window. Create a
 * surface after talvo_install; talvo_cookies_show_banner then shows the banner on it. For each frame, call
 * talvo_drain, and draw what talvo_surface_frame returns above everything else. Pass the user's input to the
 * functions of talvo_surface_input.h; talvo_surface_elements.h has what assistive technology needs.
 *
 * The rules of talvo_consent.h hold here, too. Call every function on the main thread. If a function that
 * returns an int fails, it returns 0, and talvo_last_error says why. A callback may call any function, also
 * talvo_surface_destroy, unless its comment says otherwise.
 */

#include "talvo_consent.h"
#include "talvo_draw_list.h"
#include "talvo_surface_options.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An area in which the host shows the banner. */
typedef struct talvo_surface talvo_surface;

/*
 * Creates a surface, and calls `on_needs_frame` for its first frame. Banners are shown on the surface that
 * was created last. What `options` points to is copied. Returns null on failure: no platform is installed, or
 * a field cannot be used. It then calls nothing.
 */
TALVO_API talvo_surface* talvo_surface_create(const talvo_surface_options* options);

/*
 * Destroys the surface; null is ignored. If banners were shown on this surface, none is shown until the host
 * creates another one. A banner that is on the surface now counts as closed: its `on_closed` is called the
 * next time that the main thread's work is run.
 */
TALVO_API void talvo_surface_destroy(talvo_surface* surface);

/* Takes the values that talvo_surface_options may have. */
TALVO_API talvo_status talvo_surface_resize(talvo_surface* surface, int32_t width, int32_t height,
                                            double scale);
TALVO_API talvo_status talvo_surface_set_settings(talvo_surface* surface,
                                                  const talvo_surface_settings* settings);

/* Returns 1 if a banner is on the surface, also while it fades. */
TALVO_API int talvo_surface_is_showing(talvo_surface* surface);

/* Returns 1 if the banner is modal: it then takes all input, and the host should pause what is below. */
TALVO_API int talvo_surface_is_modal(talvo_surface* surface);

/*
 * Returns 1 if the list that talvo_surface_frame would return may differ from the last one. If it returns 0,
 * there is nothing to draw again. Cheap.
 */
TALVO_API int talvo_surface_needs_frame(talvo_surface* surface);

/*
 * Returns what to draw now; without a banner, a list without commands. If nothing has changed, returns the
 * last list again, without uploads. Valid until the next call of this function for the surface, or until the
 * surface is destroyed. Returns null on failure.
 */
TALVO_API const talvo_draw_list* talvo_surface_frame(talvo_surface* surface);

/* Call it if the renderer has lost its textures. The next list then uploads them under new ids. */
TALVO_API talvo_status talvo_surface_forget_textures(talvo_surface* surface);

#ifdef __cplusplus
}
#endif

#endif
