// Any library with the C interface, as it is.
#include "contestants/stitched_frame.hpp"

int main(int argc, char** argv) {
  using namespace biseam::bench;
  const Server server;
  StitchedFrame frame(read_setup(argc, argv));
  return server.serve(frame.commands());
}
