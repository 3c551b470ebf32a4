// What a camera records of a panorama whose lower half is a ground below the camera and whose upper half is far away.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "cameras/draw.hpp"

namespace biseam::bench {

// Gray, by ffmpeg; empty where the file can't be read.
cv::Mat1b read_gray(const std::string& path, int width, int height);

// frames: pairs of pictures, lens 0 first; the camera turns and sways from one to the next.
std::vector<std::pair<cv::Mat1b, cv::Mat1b>> film(const cv::Mat1b& panorama, const Drawn& drawn, int frames,
                                                  std::uint64_t seed);

// Through an encoder and back, both lenses side by side.
void encode(std::vector<std::pair<cv::Mat1b, cv::Mat1b>>& frames, int crf);

}  // namespace biseam::bench
