#ifndef TALVO_DRAW_LIST_H
#define TALVO_DRAW_LIST_H

/*
 * One frame of the banner, for a renderer: triangles with a texture and a clip rectangle. Positions and sizes
 * are in pixels, from the top left of the surface.
 *
 * To draw a frame: apply the uploads in order; draw the commands in order, with the texture's colour
 * multiplied by the vertex's, and blended as `source * source alpha + target * (1 - source alpha)`; delete
 * the textures that are released. Blend the bytes as they are, without converting them to linear light.
 * Sample textures linearly or by the nearest pixel, which gives the same picture, and clamp at the edges.
 *
 * As on a GPU, a triangle covers the pixels whose centres are inside it. If a centre is exactly on an edge
 * that two triangles share, only one of them covers the pixel: drawn twice, a translucent shape would have a
 * visible line there.
 *
 * After each list, a surface has at most two textures, one of each format. A texture that grows is replaced:
 * the new one is uploaded and the old one is released in the same list, so there are up to four meanwhile.
 *
 * Later versions may add fields at the end of talvo_draw_list. The other structures never change.
 */

#include <stddef.h>
#include <stdint.h>

/* A corner of a triangle, in 20 bytes. */
typedef struct talvo_draw_vertex {
  float x;
  float y;
  float u; /* across the texture, from 0 to 1 */
  float v; /* down the texture, from 0 to 1; 0 is the row that was uploaded first */

  uint8_t color[4]; /* red, green, blue, alpha; sRGB, not premultiplied */
} talvo_draw_vertex;

/* A rectangle of whole pixels. */
typedef struct talvo_pixel_rect {
  int32_t x;
  int32_t y;
  int32_t width;
  int32_t height;
} talvo_pixel_rect;

/* Names a texture for as long as it exists. Never 0, and not used again. */
typedef uint32_t talvo_texture_id;

/* Triangles that are drawn by one call. */
typedef struct talvo_draw_command {
  talvo_pixel_rect clip; /* nothing is drawn outside it; never empty, and inside the surface */
  talvo_texture_id texture;
  uint32_t first_index;
  uint32_t index_count; /* three for each triangle, in either winding */
} talvo_draw_command;

typedef uint32_t talvo_texture_format;
enum {
  TALVO_ALPHA8 = 0, /* one byte a pixel: opacity; the colour is white */
  TALVO_RGBA8 = 1   /* four bytes a pixel: red, green, blue, alpha; not premultiplied */
};

/*
 * Pixels for a part of a texture. An upload for an id that the renderer does not know creates the texture,
 * whose size then never changes. The content of a new texture is undefined outside what was uploaded, and is
 * not drawn.
 */
typedef struct talvo_texture_upload {
  talvo_texture_id texture;
  talvo_texture_format format;
  int32_t texture_width;
  int32_t texture_height;
  talvo_pixel_rect area;
  const uint8_t* bytes; /* of the pixel at the top left of `area` */
  size_t bytes_per_row; /* from one row to the next */
} talvo_texture_upload;

typedef struct talvo_draw_list {
  /* Grows whenever what is drawn differs from the list before. While it stays the same, a renderer that keeps
   * its last frame need not draw. */
  uint64_t revision;

  const talvo_draw_vertex* vertices;
  size_t vertex_count;
  const uint32_t* indices; /* into `vertices` */
  size_t index_count;
  const talvo_draw_command* commands;
  size_t command_count;

  /* What changed in the textures. Each upload is reported once: apply it even if the list is not drawn. */
  const talvo_texture_upload* uploads;
  size_t upload_count;

  /* Textures that this list and all later ones do not use. Each is reported once. */
  const talvo_texture_id* released;
  size_t released_count;
} talvo_draw_list;

#endif
