// A module that exports nothing.
namespace {
[[maybe_unused]] int nothing = 0;
}
