/* A game in C that draws with OpenGL ES 2. Its stars move behind the banner; its ball waits while the banner
 * is modal. So that it runs anywhere, it draws into memory and plays alone: it saves a frame with the banner,
 * accepts everything, and ends when analytics start.
 *
 *   game-c URL [STORE [PICTURE]]      the picture is a PPM file
 */

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <math.h>
#include <stdio.h>
#include <string.h>
#include <talvo_consent.h>
#include <talvo_gles.h>
#include <talvo_surface.h>
#include <talvo_surface_elements.h>

enum { WIDTH = 780, HEIGHT = 1688 };

/* The exit status; -1 while the game goes on. */
static int status = -1;

static void on_start(void* user_data) {
  printf("%s: started\n", (const char*)user_data);
  status = 0;
}

static void on_stop(void* user_data) {
  printf("%s: stopped\n", (const char*)user_data);
}

static void on_error(const talvo_error* error, void* user_data) {
  (void)user_data;
  printf("failed: %s\n", error->description);
  status = 1;
}

/* A game with a window makes the surface of the window instead of a pixel buffer. */
static int make_context(void) {
  const EGLint wanted[] = {EGL_SURFACE_TYPE,
                           EGL_PBUFFER_BIT,
                           EGL_RENDERABLE_TYPE,
                           EGL_OPENGL_ES2_BIT,
                           EGL_RED_SIZE,
                           8,
                           EGL_GREEN_SIZE,
                           8,
                           EGL_BLUE_SIZE,
                           8,
                           EGL_NONE};
  const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
  const EGLint size[] = {EGL_WIDTH, WIDTH, EGL_HEIGHT, HEIGHT, EGL_NONE};
  EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
  EGLConfig config = NULL;
  EGLint count = 0;
  if (!eglInitialize(display, NULL, NULL)) { /* there is no screen */
    display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, NULL);
    if (!eglInitialize(display, NULL, NULL)) return 0;
  }
  if (!eglChooseConfig(display, wanted, &config, 1, &count) || count == 0) return 0;
  const EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, version);
  const EGLSurface target = eglCreatePbufferSurface(display, config, size);
  return eglMakeCurrent(display, target, target, context) == EGL_TRUE;
}

static void fill(int x, int y, int side, float red, float green, float blue) {
  glScissor(x, y, side, side);
  glClearColor(red, green, blue, 1);
  glClear(GL_COLOR_BUFFER_BIT);
}

static void draw_scene(double time, double time_of_ball) {
  const double up = fabs(sin(time_of_ball * 2));
  glEnable(GL_SCISSOR_TEST);
  fill(0, 0, HEIGHT, 0.1F, 0.08F, 0.24F);
  for (int i = 0; i < 60; ++i) {
    const int fallen = (int)(i * 97 + time * (20 + i % 5 * 15)) % HEIGHT;
    fill(i * 61 % WIDTH, HEIGHT - fallen, 5, 0.8F, 0.85F, 1);
  }
  fill(WIDTH / 2 - 40, (int)(HEIGHT * (0.7 + 0.2 * up)), 80, 1, 0.65F, 0.25F);
  glDisable(GL_SCISSOR_TEST);
}

static void save_picture(const char* name) {
  static unsigned char pixels[HEIGHT][WIDTH][4];
  FILE* const file = fopen(name, "wb");
  if (!file) return;
  glReadPixels(0, 0, WIDTH, HEIGHT, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  fprintf(file, "P6 %d %d 255\n", WIDTH, HEIGHT);
  for (int y = HEIGHT - 1; y >= 0; --y) {
    for (int x = 0; x < WIDTH; ++x) fwrite(pixels[y][x], 1, 3, file);
  }
  fclose(file);
}

/* Here a game passes the elements on to the system's interface for assistive technology. This one acts for a
 * user who accepts. Returns whether the button was there. */
static int accept_all(talvo_surface* surface) {
  const talvo_element* const* elements = NULL;
  size_t count = 0;
  if (talvo_surface_elements(surface, &elements, &count) != TALVO_OK) return 0;
  for (size_t i = 0; i < count; ++i) {
    printf("element %d: %s\n", elements[i]->role, elements[i]->name);
    if (elements[i]->role == TALVO_ROLE_BUTTON && strcmp(elements[i]->name, "Accept all") == 0) {
      return talvo_surface_perform(surface, elements[i]->id, TALVO_ACTION_ACTIVATE);
    }
  }
  return 0;
}

int main(int count, char** arguments) {
  if (count < 2) return fprintf(stderr, "usage: game-c URL [STORE [PICTURE]]\n"), 2;
  if (!make_context()) return fprintf(stderr, "there is no OpenGL ES 2\n"), 1;
  const talvo_surface_options options = {
      .size = sizeof(options), .width = WIDTH, .height = HEIGHT, .scale = 2};
  const talvo_banner_callbacks callbacks = {.size = sizeof(callbacks), .on_error = on_error};
  if (talvo_install(count > 2 ? arguments[2] : NULL, NULL, NULL) != TALVO_OK) {
    return fprintf(stderr, "%s\n", talvo_last_error()), 1;
  }
  talvo_surface* const surface = talvo_surface_create(&options);
  talvo_gles* const renderer = talvo_gles_create();
  talvo_cookies* const sdk = talvo_cookies_create(arguments[1], "demo");
  if (!surface || !renderer || !sdk) return fprintf(stderr, "%s\n", talvo_last_error()), 1;
  talvo_subscription* const analytics =
      talvo_gate_on(sdk, "statistics", NULL, on_start, on_stop, "analytics", NULL);
  if (!analytics || talvo_cookies_show_banner(sdk, &callbacks) != TALVO_OK) {
    return fprintf(stderr, "%s\n", talvo_last_error()), 1;
  }

  double time = 0;
  double time_of_ball = 0;
  for (int is_accepted = 0; status < 0; talvo_wait(10)) { /* a game with a window waits for the screen */
    talvo_drain();
    time += 0.016;
    if (!talvo_surface_is_modal(surface)) time_of_ball += 0.016;
    draw_scene(time, time_of_ball);
    const talvo_draw_list* const list = talvo_surface_frame(surface);
    if (!list || !talvo_gles_draw(renderer, list, WIDTH, HEIGHT)) status = 1;
    if (!is_accepted && talvo_surface_is_showing(surface) && !talvo_surface_needs_frame(surface)) {
      if (count > 3) save_picture(arguments[3]);
      is_accepted = accept_all(surface);
    }
  }
  talvo_subscription_end(analytics);
  talvo_gles_destroy(renderer);
  talvo_surface_destroy(surface);
  return status;
}
