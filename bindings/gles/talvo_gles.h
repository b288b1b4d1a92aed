#ifndef TALVO_GLES_H
#define TALVO_GLES_H

/*
 * Draws the draw lists of one surface with OpenGL ES 2. The context must be current whenever a function is
 * called.
 */

#include "talvo_consent.h"
#include "talvo_draw_list.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct talvo_gles talvo_gles;

/* Returns null if there is not enough memory. */
TALVO_API talvo_gles* talvo_gles_create(void);

/* Deletes what it has made in the context. If the context was lost, call talvo_gles_forget_context first. */
TALVO_API void talvo_gles_destroy(talvo_gles* renderer);

/*
 * Draws a list into the bound framebuffer, above what is there. `width` and `height` are the surface's size
 * in pixels. Leaves the context as it was, except for the vertex attributes 0 to 2. In a context of version
 * 3, no vertex array, sampler or unpack buffer may be bound, these attributes may have no divisor, and
 * rasterizer discard must be off. Returns 1, or 0 if the context cannot draw or there is not enough memory.
 */
TALVO_API int talvo_gles_draw(talvo_gles* renderer, const talvo_draw_list* list, int32_t width,
                              int32_t height);

/*
 * Call it if the context was lost, even if there is no new one yet. Call talvo_surface_forget_textures, too.
 */
TALVO_API void talvo_gles_forget_context(talvo_gles* renderer);

#ifdef __cplusplus
}
#endif

#endif
