#include "clip/write/encoder.hpp"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <vector>

#include "base/failure.hpp"
#include "base/shortage.hpp"
#include "media/libav_log.hpp"
#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

constexpr const char *kUsualCrf = "18", *kUsualPreset = "medium";  // of libx264: hardly a visible loss

std::string number_text(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

// The encoder itself would print its complaint.
void check_preset(const std::string& encoder, const std::string& preset) {
  if (encoder != "libx264" && encoder != "libx265") return;
  const std::string known = "ultrafast superfast veryfast faster fast medium slow slower veryslow placebo";
  if (preset.find(' ') == std::string::npos && (" " + known + " ").find(" " + preset + " ") != std::string::npos) return;
  throw Failure(ExitCode::usage, "--preset: '" + preset + "': " + encoder + " knows " + known);
}

// Numbers below 0 stand for no setting in libav, and x264 and x265 take what is too large for their largest.
void check_crf(const std::string& encoder, double crf) {
  const bool is_x26 = encoder.starts_with("libx264") || encoder == "libx265";
  const int most = is_x26 ? 51 : 63;
  if (crf >= 0 && crf <= most) return;
  throw Failure(ExitCode::usage, "--crf: '" + number_text(crf) + "': " + encoder + " takes 0 to " + std::to_string(most));
}

AVPixelFormat choose_format(const AVCodec& codec, AVPixelFormat panoramas, bool full_range) {
  if (!codec.pix_fmts) return panoramas;
  std::vector<AVPixelFormat> offered;  // those that say the full range first, or not at all
  for (const AVPixelFormat* known = codec.pix_fmts; *known != AV_PIX_FMT_NONE; ++known) {
    if (!says_full_range(*known)) offered.push_back(*known);
    if (says_full_range(*known) && full_range) offered.insert(offered.begin(), *known);
  }
  const AVPixelFormat format = nearest_format(panoramas, offered);
  if (format != AV_PIX_FMT_NONE) return format;
  throw Failure(ExitCode::usage, std::string("--encoder: ") + codec.name + " takes no pictures that panoramas can become");
}

bool is_rgb(AVPixelFormat format) { return (av_pix_fmt_desc_get(format)->flags & AV_PIX_FMT_FLAG_RGB) != 0; }

// Of what is encoded, as the converter makes it.
Colour encoded_colour(const Colour& panoramas, AVPixelFormat from, AVPixelFormat to) {
  Colour colour = panoramas;
  const AVPixFmtDescriptor &a = *av_pix_fmt_desc_get(from), &b = *av_pix_fmt_desc_get(to);
  if (is_rgb(from) || is_rgb(to)) colour.range = AVCOL_RANGE_JPEG;
  if (is_rgb(to)) colour.matrix = AVCOL_SPC_RGB;
  if (is_rgb(from) && !is_rgb(to)) colour.matrix = AVCOL_SPC_BT470BG;
  const bool is_subsampled_now = a.log2_chroma_w == 0 && b.log2_chroma_w == 1;
  if (is_subsampled_now && colour.siting == AVCHROMA_LOC_UNSPECIFIED) colour.siting = AVCHROMA_LOC_LEFT;
  return colour;
}

const AVCodec& find_encoder(const std::string& name) {
  const AVCodec* codec = avcodec_find_encoder_by_name(name.c_str());
  if (!codec || codec->type != AVMEDIA_TYPE_VIDEO) {
    throw Failure(ExitCode::usage, "--encoder: there is no video encoder '" + name + "' here (ffmpeg -encoders lists them)");
  }
  return *codec;
}

}  // namespace

Encoder::Encoder(const EncoderSettings& settings, const ClipFacts& facts, bool global_header)
    : name_(settings.name), settings_text_(settings.name), colour_(facts.colour) {
  const AVCodec& codec = find_encoder(settings.name);
  context_.reset(avcodec_alloc_context3(&codec));
  if (!context_) throw std::bad_alloc();
  const AVPixelFormat format = choose_format(codec, facts.format, facts.colour.range == AVCOL_RANGE_JPEG);
  const Colour colour = encoded_colour(facts.colour, facts.format, format);
  const std::string loss = loss_text(facts.format, format);
  if (!loss.empty()) notice("encoder " + name_ + ": " + loss);
  context_->width = facts.size.width;
  context_->height = facts.size.height;
  context_->sample_aspect_ratio = {1, 1};
  context_->pix_fmt = format;
  set_times(facts);
  context_->color_range = colour.range;
  context_->colorspace = colour.matrix;
  context_->color_primaries = colour.primaries;
  context_->color_trc = colour.transfer;
  context_->chroma_sample_location = colour.siting;
  context_->thread_count = 0;
  if (global_header) context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  set_options(settings);
  const LibavLog log;
  const int status = avcodec_open2(context_.get(), &codec, nullptr);
  if (status < 0 && was_thread_refused()) {
    throw Failure(ExitCode::system, "encoder " + settings_text_ + ": no thread for encoding can be started");
  }
  if (status < 0) throw Failure(ExitCode::output, "encoder " + settings_text_ + ": " + log.reason(status));
  open_filter(colour);
}

// Most take pictures at any time.  Those that know some rates, and Theora's, take the time base for the time from one picture
// to the next; the file has the clip's times all the same.
void Encoder::set_times(const ClipFacts& facts) {
  const AVRational* const rates = context_->codec->supported_framerates;
  counts_pictures_ = rates || context_->codec_id == AV_CODEC_ID_THEORA;
  const AVRational usual{25, 1}, rate = counts_pictures_ && facts.rate.num <= 0 ? usual : facts.rate;
  context_->framerate = rates ? rates[av_find_nearest_q_idx(rate, rates)] : rate;
  context_->time_base = counts_pictures_ ? av_inv_q(context_->framerate) : facts.time_base;
  if (av_cmp_q(context_->framerate, rate) == 0) return;
  notice("encoder " + name_ + ": knows no " + number_text(av_q2d(facts.rate)) + " pictures a second and is told " +
         number_text(av_q2d(context_->framerate)) + "; their times in the file are right");
}

void Encoder::set_options(const EncoderSettings& settings) {
  const bool usual = settings.name == "libx264";
  if (settings.crf) {
    set_option("crf", number_text(*settings.crf));
    check_crf(settings.name, *settings.crf);
  } else if (usual && settings.bitrate.empty()) {
    set_option("crf", kUsualCrf);
  }
  if (!settings.preset.empty()) check_preset(settings.name, settings.preset);
  if (!settings.preset.empty() || usual) set_option("preset", settings.preset.empty() ? kUsualPreset : settings.preset);
  if (!settings.bitrate.empty()) set_option("b", settings.bitrate);
  if (settings.name == "libx265")
    av_opt_set(context_->priv_data, "x265-params", "log-level=none", 0);  // it has its own printer
}

// A range without a matrix is what encoders don't write into their pictures.
void Encoder::open_filter(const Colour& colour) {
  const bool is_alone = colour.range == AVCOL_RANGE_MPEG && colour.matrix == AVCOL_SPC_UNSPECIFIED &&
                        colour.primaries == AVCOL_PRI_UNSPECIFIED && colour.transfer == AVCOL_TRC_UNSPECIFIED;
  const char* const name = context_->codec_id == AV_CODEC_ID_H264   ? "h264_metadata"
                           : context_->codec_id == AV_CODEC_ID_HEVC ? "hevc_metadata"
                                                                    : nullptr;
  const AVBitStreamFilter* const kind = is_alone && name ? av_bsf_get_by_name(name) : nullptr;
  if (!kind) return;
  AVBSFContext* filter = nullptr;
  if (av_bsf_alloc(kind, &filter) < 0) throw std::bad_alloc();
  filter_.reset(filter);
  filter->time_base_in = context_->time_base;
  int status = avcodec_parameters_from_context(filter->par_in, context_.get());
  if (status >= 0) status = av_opt_set_int(filter->priv_data, "video_full_range_flag", 0, 0);
  if (status >= 0) status = av_bsf_init(filter);
  if (status < 0)
    throw Failure(ExitCode::output, "encoder " + name_ + ": its colour range can't be told: " + libav_reason(status));
}

void Encoder::describe(AVCodecParameters& to) const {
  const int status =
      filter_ ? avcodec_parameters_copy(&to, filter_->par_out) : avcodec_parameters_from_context(&to, context_.get());
  if (status < 0) throw std::bad_alloc();
}

void Encoder::set_option(const char* option, const std::string& value) {
  const std::string name = std::string(option) == "b" ? "bitrate" : option;
  const LibavLog log;
  const int status = av_opt_set(context_.get(), option, value.c_str(), AV_OPT_SEARCH_CHILDREN);
  if (status == AVERROR_OPTION_NOT_FOUND) {
    throw Failure(ExitCode::usage, "--" + name + ": the encoder " + name_ + " has no such setting");
  }
  if (status < 0) throw Failure(ExitCode::usage, "--" + name + ": '" + value + "': " + log.reason(status));
  settings_text_ += " " + name + "=" + value;
}

void Encoder::send(const AVFrame& panorama, std::int64_t time, std::int64_t duration) {
  const Libav<AVFrame> tagged(av_frame_clone(&panorama));
  if (!tagged) throw std::bad_alloc();
  set_colour(*tagged, colour_);
  const Libav<AVFrame> frame = converter_.convert(*tagged, context_->pix_fmt);
  frame->pts = counts_pictures_ ? sent_ : time;
  frame->pkt_duration = counts_pictures_ ? 1 : duration;
  set_colour(*frame, {context_->color_range, context_->colorspace, context_->color_primaries, context_->color_trc,
                      context_->chroma_sample_location});
  moments_[frame->pts] = {time, duration};
  ++sent_;
  push(frame.get());
}

void Encoder::finish() { push(nullptr); }

void Encoder::push(const AVFrame* frame) {
  const int status = avcodec_send_frame(context_.get(), frame);
  if (status < 0) throw Failure(ExitCode::output, "encoder " + name_ + ": " + libav_reason(status));
}

// Empty packets are Theora's for pictures that are to look like the one before; no container holds them.
bool Encoder::receive(AVPacket& packet) {
  int status = avcodec_receive_packet(context_.get(), &packet);
  for (; status >= 0 && packet.size == 0; status = avcodec_receive_packet(context_.get(), &packet)) {
    moments_.erase(packet.pts);
    ++skipped_;
  }
  if (status == AVERROR_EOF) check_all_came();
  if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return false;
  ++received_;
  if (status >= 0 && filter_) status = av_bsf_send_packet(filter_.get(), &packet);
  if (status >= 0 && filter_) status = av_bsf_receive_packet(filter_.get(), &packet);
  if (status < 0) throw Failure(ExitCode::output, "encoder " + name_ + ": " + libav_reason(status));
  set_packet_times(packet);
  return true;
}

void Encoder::check_all_came() const {
  const std::int64_t missing = sent_ - received_ - skipped_;
  if (missing > 0) {
    throw Failure(ExitCode::output, "encoder " + settings_text_ + ": " + std::to_string(missing) + " pictures are lost in it");
  }
  if (skipped_ == 0) return;
  notice("encoder " + settings_text_ + ": it leaves out pictures, " + std::to_string(skipped_) +
         " in all, and those before them stay longer");
}

// Encoders that count pictures don't reorder them.
void Encoder::set_packet_times(AVPacket& packet) {
  const auto known = moments_.find(packet.pts);
  if (known == moments_.end()) return;
  if (counts_pictures_) packet.pts = packet.dts = known->second.time;
  packet.duration = known->second.duration;
  moments_.erase(known);
}

}  // namespace biseam::tool
