// A test library: which of two same-named copies was loaded.
extern "C" __attribute__((visibility("default"))) int vq_pick_value() { return PICK_VALUE; }
