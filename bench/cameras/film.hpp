// What a camera records of a panorama whose lower half is a ground below the camera and whose upper half is far away.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "camera/rotation.hpp"
#include "cameras/draw.hpp"

namespace biseam::bench {

// Gray, by ffmpeg; empty where the file can't be read.
cv::Mat1b read_gray(const std::string& path, int width, int height);

// What both lenses see at a time.
struct Shot {
  cv::Mat1b lens[2];
  Matrix3 pose;  // from the camera's world to the panorama's
};

// The camera turns and sways from one shot to the next, and walks on by `step` metres, to where the panorama's middle is.
std::vector<Shot> film(const cv::Mat1b& panorama, const Drawn& drawn, int frames, double step, std::uint64_t seed);

// Through an encoder and back, both lenses in one picture.
void encode(std::vector<Shot>& shots, bool stacked, int crf);

}  // namespace biseam::bench
