#include "view/page.hpp"

extern "C" {
extern const char biseam_viewer_page[];
extern const char biseam_viewer_page_end[];
}

namespace biseam::tool {

std::string_view page_template() { return {biseam_viewer_page, std::size_t(biseam_viewer_page_end - biseam_viewer_page)}; }

}  // namespace biseam::tool
