#include "host/app/option_group.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <string_view>

#include "kta/completion.h"

namespace maxhost::app {

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

CLI::Validator Whole(int least, int most, const std::string& expected) {
    return CLI::Validator(
        [=](std::string& text) {
            int value = 0;
            const char* const end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            const bool isGood =
                error == std::errc() && stop == end && value >= least && value <= most;
            return isGood ? std::string() : Quoted(text) + ", expected " + expected;
        },
        "");
}

CLI::Validator Real(bool (*accepts)(float), const std::string& expected) {
    return CLI::Validator(
        [=](std::string& text) {
            float value = 0;
            const char* const end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            const bool isGood = error == std::errc() && stop == end && std::isfinite(value);
            return isGood && accepts(value) ? std::string()
                                            : Quoted(text) + ", expected " + expected;
        },
        "");
}

namespace {

// Nothing where the text is no time. Ticks are whole.
std::optional<Moment> MomentOf(const std::string& text) {
    Moment moment;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, moment.count);
    const std::string_view unit(stop, static_cast<std::size_t>(end - stop));
    moment.unit = unit == "f"   ? Moment::Unit::frames
                  : unit == "s" ? Moment::Unit::seconds
                                : Moment::Unit::ticks;
    const bool isUnit = unit.empty() || moment.unit != Moment::Unit::ticks;
    const bool isWhole =
        moment.unit != Moment::Unit::ticks || (std::trunc(moment.count) == moment.count &&
                                               moment.count >= INT_MIN && moment.count <= INT_MAX);
    const bool isGood = error == std::errc() && std::isfinite(moment.count) && isUnit && isWhole;
    return isGood ? std::optional(moment) : std::nullopt;
}

}  // namespace

// ---------------------------------------------------------------- kinds of options

CLI::Option* Group::AddSwitch(const std::string& name, Plinth::UInt8& value,
                              const std::string& meaning) {
    CLI::Option* const option = app_.add_flag("--" + name + ",!--no-" + name, meaning);
    option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)->group(heading_);
    return option->each([&value](const std::string& text) {
        value = CLI::detail::to_flag_value(text) > 0 ? 1 : 0;
    });
}

CLI::Option* Group::AddAxis(const char* name, std::optional<int>& value,
                            const std::string& meaning) {
    static constexpr std::string_view kAxes = "xyz";
    CLI::Option* const option = app_.add_option_function<std::string>(
        name, [&value](const std::string& text) { value = static_cast<int>(kAxes.find(text)); },
        meaning);
    return kta::OfferWords(option, {"x", "y", "z"})
        ->type_name("AXIS")
        ->group(heading_)
        ->check(CLI::Validator(
            [](std::string& text) {
                const bool isAxis = text.size() == 1 && kAxes.find(text) != kAxes.npos;
                return isAxis ? std::string() : Quoted(text) + ", expected x, y or z";
            },
            ""));
}

CLI::Option* Group::AddMoment(const char* name, std::optional<Moment>& value,
                              const std::string& meaning) {
    return app_
        .add_option_function<std::string>(
            name, [&value](const std::string& text) { value = MomentOf(text); }, meaning)
        ->type_name("T")
        ->group(heading_)
        ->check(CLI::Validator(
            [](std::string& text) {
                return MomentOf(text) ? std::string()
                                      : Quoted(text) +
                                            ", expected whole ticks that fit 32 bits (480), "
                                            "frames (3f) or seconds (0.1s)";
            },
            ""));
}

}  // namespace maxhost::app
