#include "base/failure.hpp"
#include "view/page.hpp"
#include "view/serve.hpp"

namespace biseam::tool {
namespace {

[[noreturn]] void refuse() {
  throw Failure(ExitCode::usage,
                "view: this biseam was built without its viewer; make build adds it, with the packages it needs");
}

}  // namespace

std::string_view page_template() { refuse(); }
void serve(const std::string&, const PageFiles&, int) { refuse(); }

}  // namespace biseam::tool
