#pragma once

/// @file Toolkit.h
/// Signals of the toolkit with C++ handlers.

#include <gtk/gtk.h>

#include <exception>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>

#include "Files/Drawing.h"

namespace sketch {
namespace detail {

template <class Result, class... Arguments>
struct Signal {
  using Handler = std::function<Result(Arguments...)>;
  static Result call(gpointer, Arguments... arguments, gpointer handler) {
    try {
      return (*static_cast<Handler*>(handler))(arguments...);
    } catch (const std::exception&) {
      tq::TQLogging::applicationLog().log(tq::LogLevel::error, "{}", tqdoc::exceptionText());
      return Result();
    }
  }
  static void release(gpointer handler, GClosure*) { delete static_cast<Handler*>(handler); }
};

}  // namespace detail

/// Calls `handler` for a signal of `sender`, as long as that exists. `Result` and `Arguments` are
/// those of the signal, without the sender. If the handler throws, for example because there is not
/// enough memory to draw, the reason is logged and the editor goes on: the drawing is not saved
/// yet.
template <class Result, class... Arguments>
void onSignal(gpointer sender, const char* signal,
              std::type_identity_t<std::function<Result(Arguments...)>> handler) {
  using Signal = detail::Signal<Result, Arguments...>;
  g_signal_connect_data(sender, signal, G_CALLBACK(&Signal::call),
                        new typename Signal::Handler(std::move(handler)), &Signal::release,
                        GConnectFlags(0));
}

/// Returns text of the toolkit, which this function frees. Null is "".
[[nodiscard]] inline std::string taken(char* text) {
  const std::string copy = text != nullptr ? text : "";
  g_free(text);
  return copy;
}

}  // namespace sketch
