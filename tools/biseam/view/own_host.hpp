#pragma once

#include <string_view>

namespace biseam::tool {

// Whether a request's Host field names this machine's own address, 127.0.0.1, localhost or [::1], with the server's port, which
// may be left out when it is 80.  A website whose name was made to lead here asks under its own name and must get nothing.
bool is_own_host(std::string_view host, int port);

}  // namespace biseam::tool
