#define GLFW_INCLUDE_NONE
#include "apps/tuner/window/tuner.h"

#include <GLFW/glfw3.h>
#include <backends/imgui_impl_glfw.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>

#include "apps/quorvane/drawing/overlays.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/tuner/core/picking.h"
#include "composition/geometry.h"
#include "media/picture/picture_file.h"
#include "media/picture/resample.h"
#include "media/scene/sheet.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::tuner {
namespace {

namespace fs = std::filesystem;

constexpr char kFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr float kFontPixels = 14.0f;

// Of a room that is being dragged only the last size is prepared for.
constexpr double kRoomRest = 0.25;
constexpr double kNudge = 0.06;
// What is lost at most where the program is killed.
constexpr double kSessionSeconds = 5.0;
// Of a stage in the panel, and under the pointer.
constexpr float kSmallStage = 160.0f, kLargeStage = 480.0f;

bool samePath(const std::vector<app::Position>& a, const std::vector<app::Position>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const app::Position& p, const app::Position& q) {
                          return p.x == q.x && p.y == q.y && p.zoom == q.zoom;
                      });
}

/// Whether a plan for the one does for the other.
bool plansAlike(Tuning a, Tuning b) {
    for (Tuning* const tuning : {&a, &b}) {
        // The path says what these come to.
        tuning->motion.clear();
        tuning->amount = 0.0;
        tuning->frames = tuning->fps = 0;
        tuning->others.clear();
        for (const char* const unused : {"z_post_offset", "offset_gain", "offset_len"})
            tuning->parameters.erase(unused);
    }
    return a == b;
}

bool sameRequest(const PrepareRequest& a, const PrepareRequest& b) {
    const bool same_room = a.tuning.longest > 0 || a.room == b.room;
    return a.input.photo == b.input.photo && a.input.depth == b.input.depth && a.dropped == b.dropped &&
           plansAlike(a.tuning, b.tuning) && same_room && samePath(a.path, b.path) &&
           a.wants_stretch == b.wants_stretch;
}

void loadFonts(float scale) {
    ImGuiIO& io = ImGui::GetIO();
    // Beyond Latin for the names of files; the marks are those that texts of ours have.
    static const ImWchar kRanges[] = {0x0020, 0x024F, 0x0370, 0x052F, 0x2010, 0x2027,
                                      0x2190, 0x21FF, 0x00D7, 0x00D7, 0};
    std::error_code none;
    if (fs::exists(kFont, none)) {
        io.Fonts->AddFontFromFileTTF(kFont, std::round(kFontPixels * scale), nullptr, kRanges);
        return;
    }
    ImFontConfig config;
    config.SizePixels = std::round(13.0f * scale);
    io.Fonts->AddFontDefault(&config);
}

/// The picture of a stage, as long as `longest` on its longer side, with the photo's aspect.
media::RgbImage stageImage(const media::RgbImage& image, Size photo, float longest) {
    return media::resample(image, scaledPictureSize(photo, static_cast<int>(longest), false));
}

}  // namespace

Tuner::Tuner(const StartOptions& options, Window* window)
    : m_window(window),
      m_options(options),
      m_context(ImGui::CreateContext()),
      m_profiles(options.profiles),
      m_preparing(
          [this](const PrepareRequest& request, const Latest<PrepareRequest, Prepared, 2>::Step& step) {
              return m_preparer.prepare(request, step);
          }) {
    m_scale = options.scale > 0.0 ? static_cast<float>(options.scale) : window->scale();
    ImGuiIO& io = ImGui::GetIO();
    // The session has a file of its own.
    io.IniFilename = nullptr;
    // Clicks are counted by frames, and a frame may take a tenth of a second.
    io.MouseDoubleClickTime = 0.8f;
    ImGui::StyleColorsDark();
    ImGuiStyle& style = ImGui::GetStyle();
    style.WindowRounding = 0.0f;
    style.FrameRounding = 3.0f;
    style.GrabRounding = 3.0f;
    style.WindowBorderSize = 0.0f;
    style.ItemSpacing = {6.0f, 4.0f};
    style.Colors[ImGuiCol_WindowBg] = {0.09f, 0.09f, 0.10f, 1.0f};
    style.ScaleAllSizes(m_scale);
    loadFonts(m_scale);
    ImGui_ImplGlfw_InitForOther(window->handle(), true);
    m_drawing = std::make_unique<ControlsDrawing>();
    m_extra = std::make_unique<ExtraPictures>();
    m_bench.input = options.input;
    m_bench.begin(options.tunings);
    m_session_tunings = options.tunings;
    m_bench.hand = options.hand;
    if (!m_bench.hand.empty()) m_bench.source = Source::kRecorded;
    m_profile_names = m_profiles.names();
    if (!options.remark.empty()) fail(options.remark);
    m_last = glfwGetTime();
}

Tuner::~Tuner() {
    m_drawing.reset();
    ImGui_ImplGlfw_Shutdown();
    ImGui::DestroyContext(m_context);
}

void Tuner::fail(const std::string& sentence) {
    m_message = app::printable(sentence);
    m_message_is_failure = true;
    m_message_time = m_now;
}

void Tuner::say(const std::string& sentence) {
    m_message = app::printable(sentence);
    m_message_is_failure = false;
    m_message_time = m_now;
}

void Tuner::attempt(const std::function<void()>& work) {
    try {
        work();
    } catch (const Error& error) {
        fail(error.what());
    }
}

void Tuner::frame() {
    m_now = glfwGetTime();
    const double passed = m_now - m_last;
    m_last = m_now;
    m_frame_times.add(static_cast<float>(1000.0 * passed));
    m_printed_rest += m_printed.take();
    addStopwatchLines(&m_printed_rest, &m_plots);

    takeInput();
    takePictures();
    requestPictures();
    m_bench.advance(passed);
    m_position = position();
    if (m_recording) {
        m_take.add(m_now, m_position);
        if (m_take.seconds() >= Recording::kMostSeconds) stopRecording();
    }
    attempt([this] { drawPictures(); });
    followClip();
    followWrites();

    if (m_now - m_session_time > kSessionSeconds && !(m_bench.tunings == m_session_tunings)) saveSession();

    m_controls.clear();
    ImGui_ImplGlfw_NewFrame();
    ImGui::NewFrame();
    layOut();
    ImGui::Render();
    // A drag is one step to go back.
    if (!ImGui::IsAnyItemActive()) m_bench.commit();

    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    drawFlat();
    glClearColor(0.09f, 0.09f, 0.10f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    m_drawing->draw(*ImGui::GetDrawData());
    writeControls();
    ++m_frame;
    m_done = m_done || m_window->closed() || (m_options.frames > 0 && m_frame >= m_options.frames);
}

void Tuner::takeInput() {
    const bool typing = ImGui::GetIO().WantTextInput;
    for (const KeyPress& key : m_window->takeKeys())
        if (!typing || key.key == GLFW_KEY_ESCAPE) onKey(key);
    std::vector<std::string> files = m_window->takeDrops();
    constexpr size_t kMostFiles = 2;
    if (files.size() > kMostFiles) files.resize(kMostFiles);
    if (!files.empty()) {
        m_dropped = files;
        m_asked = {};
    }
}

void Tuner::onKey(const KeyPress& key) {
    if (key.ctrl) {
        switch (key.key) {
            case GLFW_KEY_Z: key.shift ? m_bench.redo() : m_bench.undo(); break;
            case GLFW_KEY_Y: m_bench.redo(); break;
            case GLFW_KEY_S: attempt([this] { saveScreenshot(); }); break;
            case GLFW_KEY_E: attempt([this] { exportAll(); }); break;
            case GLFW_KEY_Q: m_done = true; break;
            default: break;
        }
        return;
    }
    switch (key.key) {
        case GLFW_KEY_LEFT: m_gaze.nudge(-kNudge, 0.0, m_now); break;
        case GLFW_KEY_RIGHT: m_gaze.nudge(kNudge, 0.0, m_now); break;
        case GLFW_KEY_DOWN: m_gaze.nudge(0.0, -kNudge, m_now); break;
        case GLFW_KEY_UP: m_gaze.nudge(0.0, kNudge, m_now); break;
        case GLFW_KEY_HOME: m_gaze.point({}, m_now); break;
        case GLFW_KEY_COMMA:
        case GLFW_KEY_PERIOD:
            m_bench.playing = false;
            m_bench.goToFrame(m_bench.frame() + (key.key == GLFW_KEY_COMMA ? -1 : 1));
            break;
        default: break;
    }
    if (key.repeated) return;
    switch (key.key) {
        case GLFW_KEY_X: m_bench.flip(); break;
        case GLFW_KEY_S: m_bench.show = m_bench.show == Show::kSplit ? Show::kOne : Show::kSplit; break;
        case GLFW_KEY_D:
            m_bench.show = m_bench.show == Show::kDifference ? Show::kOne : Show::kDifference;
            break;
        case GLFW_KEY_P: m_picking = !m_picking; break;
        case GLFW_KEY_SPACE: m_bench.playing = !m_bench.playing; break;
        case GLFW_KEY_G: m_show_stages = !m_show_stages; break;
        case GLFW_KEY_T: m_show_timings = !m_show_timings; break;
        case GLFW_KEY_W: m_wires = !m_wires; break;
        case GLFW_KEY_R: toggleRecording(); break;
        case GLFW_KEY_F1: m_show_keys = !m_show_keys; break;
        case GLFW_KEY_ESCAPE: m_picking = m_show_keys = false; break;
        default: break;
    }
}

void Tuner::toggleRecording() {
    if (m_recording) return stopRecording();
    m_take = {};
    m_recording = true;
    m_bench.source = Source::kHand;
}

void Tuner::stopRecording() {
    m_recording = false;
    if (m_take.empty()) return;
    m_bench.hand = m_take;
    m_bench.path_points.clear();
    m_bench.source = Source::kRecorded;
    m_bench.phase = 0.0;
    m_bench.playing = true;
    say(app::formatted("recorded %.1f seconds of the hand", m_take.seconds()));
}

void Tuner::usePath() {
    m_bench.hand =
        closedPath(m_bench.path_points, static_cast<double>(m_bench.tuning().frames) / m_bench.tuning().fps);
    if (m_bench.source == Source::kRecorded && m_bench.hand.empty()) m_bench.source = Source::kMotion;
}

app::Position Tuner::position() {
    const bool plays = m_bench.source != Source::kHand;
    const app::Position place = m_bench.playing ? m_bench.placeNow() : m_bench.frameAt(m_bench.frame());
    if (plays) return place;
    const double amount = m_bench.tuning().amount;
    app::Position unscaled = place;
    if (amount > 0.0) {
        unscaled.x = place.x / amount;
        unscaled.y = place.y / amount;
    }
    app::Position hand = m_gaze.at(m_now, unscaled, m_bench.idles && !m_recording);
    hand.x *= amount;
    hand.y *= amount;
    // No plan for hands leaves room for a zoom.
    hand.zoom = 1.0;
    return hand;
}

bool Tuner::needs(size_t slot) const { return m_bench.show != Show::kOne || slot == m_bench.active; }

void Tuner::requestPictures() {
    if (m_bench.input.photo.empty() && m_dropped.empty()) return;
    if (m_room.width < 1 || m_room.height < 1) return;
    if (m_room != m_room_seen) {
        m_room_seen = m_room;
        m_room_time = m_now;
    }
    const bool first = !m_asked[0] && !m_asked[1];
    if (!first && m_now - m_room_time < kRoomRest) return;
    for (size_t slot = 0; slot < m_asked.size(); ++slot) {
        if (!needs(slot)) continue;
        // Both show the same photo: the other one waits for what was dropped.
        if (!m_dropped.empty() && slot != m_bench.active) continue;
        attempt([&] {
            const Tuning& tuning = m_bench.tunings[slot];
            auto probe = m_probes.find(tuning.samples);
            if (probe == m_probes.end())
                probe = m_probes.emplace(tuning.samples, Picture::probe(tuning.samples)).first;
            PrepareRequest request;
            request.input = m_bench.input;
            request.dropped = m_dropped;
            request.tuning = tuning;
            request.room = m_room;
            request.path = m_bench.path(tuning);
            request.supersample = probe->second.supersample;
            request.largest_texture = probe->second.largest_texture;
            request.wants_stretch = m_show_stages && slot == m_bench.active;
            if (m_asked[slot] && sameRequest(*m_asked[slot], request)) return;
            const bool other_images = !m_asked[slot] || m_asked[slot]->input.photo != request.input.photo ||
                                      m_asked[slot]->input.depth != request.input.depth || !m_dropped.empty();
            m_asked[slot] = request;
            m_preparing.ask(slot, std::move(request), other_images);
        });
    }
}

void Tuner::takePictures() {
    for (size_t slot = 0; slot < m_pictures.size(); ++slot) {
        std::optional<Latest<PrepareRequest, Prepared, 2>::Outcome> outcome = m_preparing.take(slot);
        if (!outcome) continue;
        const bool was_dropped = m_asked[slot] && !m_asked[slot]->dropped.empty();
        if (!outcome->failure.empty()) {
            fail(outcome->failure);
            if (was_dropped) {
                m_dropped.clear();
                // What was shown before is still what is there.
                m_asked[slot]->dropped.clear();
            }
            continue;
        }
        if (was_dropped) {
            if (m_bench.input.photo != outcome->result.input.photo)
                for (Tuning& tuning : m_bench.tunings) forgetPlace(&tuning);
            m_bench.input = outcome->result.input;
            m_dropped.clear();
            m_asked[slot]->input = m_bench.input;
            m_asked[slot]->dropped.clear();
            m_asked[1 - slot].reset();
        }
        attempt([&] {
            m_pictures[slot].take(std::move(outcome->result));
            const Prepared& prepared = m_pictures[slot].prepared();
            m_window->setTitle(fs::path(m_bench.input.photo).filename().string() + " - quorvane-tuner");
            if (!prepared.notes.empty() && was_dropped) say(prepared.notes.front());
            if (m_stages.of == slot) m_stages.of = 2;
        });
    }
}

void Tuner::drawPictures() {
    for (size_t slot = 0; slot < m_pictures.size(); ++slot) {
        if (!needs(slot) || !m_pictures[slot].ready()) continue;
        m_pictures[slot].preview(m_bench.tunings[slot]);
        m_pictures[slot].draw(m_position);
    }
    if (m_show_stages) showStages();
}

void Tuner::showStages() {
    const size_t slot = m_bench.active;
    Picture& picture = m_pictures[slot];
    if (!picture.ready() || m_stages.of == slot) return;
    const Prepared& prepared = picture.prepared();
    const Size photo = {prepared.planned.photo.width, prepared.planned.photo.height};
    const media::GrayImage shaped = picture.view().shapedDepth();
    const double still = depthAtDistance(prepared.planned.plan.rotate_z_trans);
    const auto put = [&](size_t place, const char* label, const std::string& says, const auto& image) {
        Stage& stage = m_stages.all[place];
        stage.label = label;
        stage.says = says;
        stage.small.fill(image(kSmallStage * m_scale));
        stage.large.fill(image(kLargeStage * m_scale));
    };
    put(0, "photo", "the photo as it is uploaded",
        [&](float width) { return stageImage(prepared.planned.photo, photo, width); });
    put(1, "depth given", "the depth map as it was given, larger = nearer",
        [&](float width) { return stageImage(media::toRgb(prepared.given), photo, width); });
    put(2, "guide", "the photo's luma at grid size, along the edges of which the depth is smoothed",
        [&, guide = media::toRgb(picture.view().guide())](float width) {
            return stageImage(guide, photo, width);
        });
    put(3, "depth shaped", "the depth as the mesh is bent by it; on the red line it stays in place",
        [&](float width) {
            media::RgbImage bent = stageImage(media::toRgb(shaped), photo, width);
            app::drawContour(
                [field = app::fieldOf(shaped), still](double u, double v) { return field(u, v) - still; },
                {255, 48, 48}, &bent);
            return bent;
        });
    if (prepared.stretch) {
        const PictureStretch& stretch = *prepared.stretch;
        put(4, "stretch",
            app::formatted("stretch: %.1f %% over ×2,\nat the cross ×%.1f", 100.0 * stretch.streaked_part,
                           stretch.worst_times),
            [&](float width) {
                media::RgbImage map = app::heatMap(stageImage(prepared.planned.photo, photo, width),
                                                   stretch.times, {shaped.width, shaped.height});
                app::drawCross(stretch.worst_x, stretch.worst_y, {255, 255, 255}, &map);
                return map;
            });
    }
    m_stages.of = slot;
}

LibParam Tuner::valuesInForce() const {
    const Picture& picture = m_pictures[m_bench.active];
    return inForce(m_bench.tuning(), picture.ready() ? picture.prepared().planned.plan.parameters
                                                     : std::vector<std::pair<std::string, double>>());
}

void Tuner::pickPivot(double x, double y) {
    m_picking = false;
    const Picture& picture = m_pictures[m_bench.active];
    if (!picture.ready()) return;
    const ParallaxView& view = picture.parallax();
    const std::optional<PhotoPlace> place =
        photoPlaceAt(view.geometry(), view.shapedDepth(), view.renderer().params, view.renderer().m_transX,
                     view.renderer().m_transY, x, y);
    if (!place) return fail("there is nothing of the photo at that place");
    const auto rounded = [](double part) { return std::round(std::clamp(part, 0.0, 1.0) * 1000.0) / 1000.0; };
    setPivot(Pivot::kPoint, rounded(place->x), rounded(place->y), &m_bench.tuning());
    say(app::formatted("what the photo shows at %.3f, %.3f stays in place", rounded(place->x),
                       rounded(place->y)));
}

Exported Tuner::exported() const {
    return {m_bench.exported(),
            valuesInForce(),
            m_bench.input.photo,
            m_bench.input.depth,
            m_bench.source == Source::kRecorded && !m_bench.hand.empty(),
            exportFolder()};
}

std::string Tuner::exportFolder() const {
    if (!m_options.export_folder.empty()) return m_options.export_folder;
    const fs::path photo(m_bench.input.photo);
    return (photo.parent_path() / (photo.stem().string() + "-tuned")).string();
}

void Tuner::exportAll() {
    if (m_bench.input.photo.empty()) return fail("there is no photo to export for");
    const Exported all = exported();
    const std::string folder = exportFolder();
    makeFolder(folder);
    const auto write = [&folder](const char* name, const std::string& text) {
        PendingOutput file(folder + "/" + name);
        file.fill(text);
        file.commit();
    };
    write(kProfileFile, media::profileText(profileOf(all.tuning)));
    write("profile-fixed.json", media::profileText(fixedProfileOf(all.tuning, all.values)));
    if (all.has_hand) write(kHandFile, m_bench.hand.lines());
    write("render.sh", renderScript(all));
    write("setprop.sh", "#!/bin/sh\n" + setpropLines(all));
    write("tuned.cpp.txt", cppSnippet(all));
    write("tuned.java.txt", javaSnippet(all));
    say("exported to " + folder);
}

void Tuner::makeClip() {
    exportAll();
    const Exported all = exported();
    const std::string folder = exportFolder();
    m_clip_path = folder + "/clip.mp4";
    std::vector<std::string> words = {m_options.program, "render", all.photo};
    if (!all.depth.empty()) words.push_back(all.depth);
    words.insert(words.end(), {"--profile", folder + "/" + kProfileFile, "-o", m_clip_path, "-q"});
    if (all.has_hand) words.insert(words.end(), {"--motion-file", folder + "/" + kHandFile});
    m_clip = std::make_unique<ChildProcess>(words, ChildFiles());
    say("making " + m_clip_path);
}

void Tuner::followClip() {
    if (m_clip == nullptr) return;
    const std::optional<ExitStatus> ended = m_clip->ended();
    if (!ended) return;
    m_clip.reset();
    if (ended->succeeded())
        say("made " + m_clip_path);
    else
        fail(m_clip_path + ": quorvane render " + ended->words() + "; its command line in " + exportFolder() +
             "/render.sh says why");
}

void Tuner::saveScreenshot() {
    const Picture& picture = m_pictures[m_bench.active];
    if (!picture.ready()) return fail("there is no picture yet");
    const std::string folder = exportFolder();
    makeFolder(folder);
    std::string path;
    for (int number = 1; path.empty() || fs::exists(path); ++number)
        path = folder + app::formatted("/screenshot-%d.png", number);
    // Compressing it takes longer than a frame may.
    m_writes.emplace_back(path, std::async(std::launch::async, [image = picture.pixels(), path] {
                              media::writePng(image, path);
                          }));
}

void Tuner::followWrites() {
    for (auto write = m_writes.begin(); write != m_writes.end();) {
        if (write->second.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            ++write;
            continue;
        }
        attempt([&] {
            write->second.get();
            say("saved " + write->first);
        });
        write = m_writes.erase(write);
    }
}

void Tuner::saveSession() {
    if (m_options.session.empty()) return;
    m_session_time = m_now;
    m_session_tunings = m_bench.tunings;
    attempt([this] {
        const auto absolute = [](const std::string& path) {
            return path.empty() ? path : fs::absolute(path).string();
        };
        quorvane::tuner::saveSession(
            {absolute(m_bench.input.photo), absolute(m_bench.input.depth), m_bench.tunings, m_window->size()},
            m_options.session);
    });
}

void Tuner::writeControls() {
    constexpr double kOften = 0.05;
    if (m_options.controls.empty() || m_now - m_controls_time < kOften) return;
    m_controls_time = m_now;
    // Whole at every moment, but of no worth after a power cut: PendingOutput would wait for the disk.
    const std::string next = m_options.controls + ".next";
    std::ofstream(next, std::ios::binary) << m_controls.lines();
    std::error_code failed;
    fs::rename(next, m_options.controls, failed);
    if (failed) fail(m_options.controls + ": cannot be written (" + failed.message() + ")");
}

}  // namespace quorvane::tuner
