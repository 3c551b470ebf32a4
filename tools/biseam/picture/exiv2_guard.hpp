// Exiv2 as the rest of the tool wants it: quiet, with errors of the standard kind.
#pragma once

#include <exiv2/exiv2.hpp>
#include <memory>
#include <stdexcept>

namespace biseam::tool {

// Exiv2's own errors become plain ones; what it would print besides is not for our standard error.
template <class Work>
auto guarded(Work work) {
  Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
  Exiv2::XmpParser::initialize();
  try {
    return work();
  } catch (const Exiv2::AnyError& error) {
    throw std::runtime_error(error.what());
  }
}

}  // namespace biseam::tool
