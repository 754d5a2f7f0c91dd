// A converter library that has none of the entry points.
extern "C" void Unrelated() {
}
