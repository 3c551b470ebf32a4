// FFmpeg's filter v360: the remap alone, no seam is searched and nothing is blended.
//
// Counted: the filter graph from the frame handed in to the frame taken out.  Not counted: making planar frames of the
// pictures, as the filter takes no interleaved chroma; the first frame, which builds its tables.
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
}

#include "driver/pictures.hpp"
#include "driver/serve.hpp"

namespace biseam::bench {

namespace {

void check(int status, const char* what) {
  if (status >= 0) return;
  std::fprintf(stderr, "v360: %s failed\n", what);
  std::exit(1);
}

// Both pictures side by side, planar.
AVFrame* make_input(const Setup& setup) {
  const int size = setup.size();
  AVFrame* frame = av_frame_alloc();
  frame->format = AV_PIX_FMT_YUV420P;
  frame->width = 2 * size;
  frame->height = size;
  check(av_frame_get_buffer(frame, 0), "a frame's memory");
  for (int side = 0; side < 2; ++side) {
    const Nv12 picture = read_fisheye(setup, side);
    for (int y = 0; y < size; ++y) {
      std::memcpy(frame->data[0] + y * frame->linesize[0] + side * size, &picture.luma[static_cast<std::size_t>(y) * size],
                  size);
    }
    for (int y = 0; y < size / 2; ++y) {
      for (int x = 0; x < size / 2; ++x) {
        for (int plane = 1; plane < 3; ++plane) {
          frame->data[plane][y * frame->linesize[plane] + side * size / 2 + x] =
              picture.chroma[static_cast<std::size_t>(y) * size + 2 * x + plane - 1];
        }
      }
    }
  }
  return frame;
}

class Graph {
 public:
  explicit Graph(const Setup& setup) : input_(make_input(setup)), output_(av_frame_alloc()) {
    graph_->nb_threads = setup.threads;
    char size[128], options[128];
    std::snprintf(size, sizeof size, "video_size=%dx%d:pix_fmt=%d:time_base=1/25", input_->width, input_->height,
                  AV_PIX_FMT_YUV420P);
    // To the filter, the circle ends at the middles of the outermost pixels.
    const double fov = kFieldOfView * (setup.size() - 1) / setup.size();
    std::snprintf(options, sizeof options, "dfisheye:e:ih_fov=%.17g:iv_fov=%.17g:interp=%s:w=%d:h=%d", fov, fov,
                  setup.interp.c_str(), setup.width, setup.size());
    AVFilterContext* filter = nullptr;
    check(avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in", size, nullptr, graph_), "the source");
    check(avfilter_graph_create_filter(&filter, avfilter_get_by_name("v360"), "v360", options, nullptr, graph_), "the filter");
    check(avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr, graph_),
          "the sink");
    check(avfilter_link(source_, 0, filter, 0), "a link");
    check(avfilter_link(filter, 0, sink_, 0), "a link");
    check(avfilter_graph_config(graph_, nullptr), "the graph");
    run();
  }
  ~Graph() {
    av_frame_free(&input_);
    av_frame_free(&output_);
    avfilter_graph_free(&graph_);
  }
  Graph(const Graph&) = delete;
  Graph& operator=(const Graph&) = delete;

  // The picture of the last run goes back to the filter's pool first.
  void run() {
    av_frame_unref(output_);
    check(av_buffersrc_add_frame_flags(source_, input_, AV_BUFFERSRC_FLAG_KEEP_REF), "a frame in");
    check(av_buffersink_get_frame(sink_, output_), "a frame out");
  }

  Nv12 output() const {
    Nv12 picture(output_->width, output_->height);
    for (int y = 0; y < picture.height; ++y) {
      std::memcpy(&picture.luma[static_cast<std::size_t>(y) * picture.width], output_->data[0] + y * output_->linesize[0],
                  picture.width);
    }
    for (int y = 0; y < picture.height / 2; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        const int plane = 1 + x % 2;
        picture.chroma[static_cast<std::size_t>(y) * picture.width + x] =
            output_->data[plane][y * output_->linesize[plane] + x / 2];
      }
    }
    return picture;
  }

 private:
  AVFrame *input_, *output_;
  AVFilterGraph* graph_ = avfilter_graph_alloc();
  AVFilterContext *source_ = nullptr, *sink_ = nullptr;
};

int run(int argc, char** argv) {
  const Server server;
  Graph graph(read_setup(argc, argv));
  return server.serve({{"frame",
                        [&](const std::string&) {
                          Figures figures;
                          const Stopwatch watch;
                          graph.run();
                          watch.stop("frame", figures);
                          return figures;
                        }},
                       {"save", [&](const std::string& file) {
                          save(graph.output(), file);
                          return Figures{};
                        }}});
}

}  // namespace

}  // namespace biseam::bench

int main(int argc, char** argv) { return biseam::bench::run(argc, argv); }
