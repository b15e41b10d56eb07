// Built into every program of a sanitised build. Qt Quick 6.4 leaves its scene graph's textures
// behind at exit, even in a window of twelve plain Image items, and with them the images and
// paint engines they hold; the leak checker skips what it reaches from those textures alone.
extern "C" const char* __lsan_default_suppressions() { return "leak:QSGTexture::QSGTexture\n"; }
