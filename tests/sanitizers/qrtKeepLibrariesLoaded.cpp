// Linked into every program of a sanitizer build. Drivers stay loaded to the end: of one that is gone the sanitizers can
// neither name the frames nor see the pointers that it still holds.
extern "C" [[gnu::visibility("default")]] int dlclose(void*) {
    return 0;
}
