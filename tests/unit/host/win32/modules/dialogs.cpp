// A module that holds dialogs and nothing else.
namespace {
[[maybe_unused]] int nothing = 0;
}
