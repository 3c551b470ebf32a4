#include "stitch/summary.hpp"

#include <cstdio>

#include "base/failure.hpp"
#include "base/thread_count.hpp"
#include "text/json.hpp"

namespace biseam::tool {
namespace {

std::string count_text(std::int64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void tell_clip_damage(const ClipReader& clip) {
  const ClipDamage& damage = clip.damage();
  const std::string& name = clip.container().name();
  if (damage.packets > 0) {
    std::string line = name + ": " + count_text(damage.packets, "damaged packet", "damaged packets");
    if (damage.repeated > 0) line += ", " + count_text(damage.repeated, "picture", "pictures") + " replaced by the one before";
    if (damage.dropped > 0) line += ", " + std::to_string(damage.dropped) + " left out at the beginning";
    notice(line);
  }
  if (damage.cut_short) notice(name + ": is cut short");
}

const char* layout_text(Layout layout) {
  return layout == Layout::automatic ? "auto" : layout == Layout::side_by_side ? "side-by-side" : "top-bottom";
}

const char* quality_text(BiseamQuality quality) {
  return quality == BISEAM_QUALITY_FAST ? "fast" : quality == BISEAM_QUALITY_GOOD ? "good" : "best";
}

void add_engine(const EngineOptions& engine, bool near, JsonObject& settings) {
  settings.add("engine", engine.kind == EngineKind::exact ? "exact" : "ring");
  if (engine.kind == EngineKind::exact) return;
  settings.add("quality", quality_text(engine.quality));
  settings.add("seams", engine.steady_seams ? "steady" : "free");
  settings.add("near", near ? "on" : "off");
  settings.add("light", engine.light == BISEAM_LIGHT_MATCH ? "match" : "off");
  settings.add("jobs", engine.threads == 0 ? processors() : engine.threads);
  settings.add("look_yaw", engine.look.yaw);
  settings.add("look_pitch", engine.look.pitch);
  settings.add("look_roll", engine.look.roll);
}

JsonObject settings_json(const RunReport& run) {
  JsonObject settings;
  const StitchSource& source = run.job.source;
  settings.add("input", source.files.front());
  if (source.files.size() == 2) settings.add("second_input", source.files.back());
  settings.add("output", run.job.output);
  settings.add("output_kind", run.output_kind);
  settings.add("layout", layout_text(source.layout));
  settings.add("size", size_text(run.size));
  add_engine(source.engine, run.near, settings);
  settings.add("search", run.searches);
  settings.add("seam_hold", run.job.seam_hold);
  if (!run.job.analysis.empty()) settings.add("analysis", run.job.analysis);
  return settings;
}

double rate(const Summary& summary, double seconds) { return seconds > 0 ? double(summary.frames()) / seconds : 0; }

}  // namespace

void Summary::count_frame(const SeamPath& path) {
  ++frames_;
  if (path.empty()) return;
  movement_ += tool::seam_movement(last_, path);
  last_ = path;
}

double Summary::seam_movement() const { return frames_ < 2 ? 0 : movement_ / double(frames_ - 1); }

void tell_damage(const PairReader& clips) {
  for (int k = 0; k < clips.clips(); ++k) tell_clip_damage(clips.clip(k));
  if (clips.clips() == 1) return;
  const PairingReport& report = clips.report();
  const std::string &first = clips.clip(0).container().name(), &second = clips.clip(1).container().name();
  if (report.unpaired > 0) {
    notice(first + ": " + count_text(report.unpaired, "picture has", "pictures have") + " no partner in " + second + " and " +
           (report.unpaired == 1 ? "is" : "are") + " left out");
  }
  if (report.held > 0) notice(second + ": its nearest picture stood in for " + count_text(report.held, "picture", "pictures"));
  if (report.second_goes_on) notice(second + ": goes on after the end of " + first + "; the rest is left out");
}

std::string summary_line(const Summary& summary, double seconds) {
  char text[160];
  std::snprintf(text, sizeof text, "%s in %.1f s, %.1f fps; seams move by %.2f columns a frame",
                count_text(summary.frames(), "frame", "frames").c_str(), seconds, rate(summary, seconds),
                summary.seam_movement());
  return text;
}

std::string summary_json(const RunReport& run) {
  const PairReader& clips = run.clips;
  std::int64_t damaged = 0, dropped = clips.report().unpaired, repeated = clips.report().held;
  bool cut_short = false;
  for (int k = 0; k < clips.clips(); ++k) {
    const ClipDamage& damage = clips.clip(k).damage();
    damaged += damage.packets;
    dropped += damage.dropped;
    repeated += damage.repeated;
    cut_short = cut_short || damage.cut_short;
  }
  JsonObject json;
  json.add("frames", run.summary.frames());
  json.add("dropped", dropped);
  json.add("repeated", repeated);
  json.add("damaged_packets", damaged);
  json.add("cut_short", cut_short);
  json.add("interrupted", run.interrupted);
  json.add("seconds", run.seconds);
  json.add("fps", rate(run.summary, run.seconds));
  json.add("seam_movement", run.summary.seam_movement());
  json.add("settings", settings_json(run));
  return json.text() + "\n";
}

}  // namespace biseam::tool
