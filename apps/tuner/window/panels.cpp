#include <imgui.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "apps/tuner/core/keys.h"
#include "apps/tuner/core/slider_scale.h"
#include "apps/tuner/window/tuner.h"
#include "composition/geometry.h"
#include "host/parameters.h"
#include "system/error.h"

namespace quorvane::tuner {
namespace {

constexpr float kPanelWidth = 400.0f, kStagesWidth = 260.0f, kStatusHeight = 26.0f, kToolbarHeight = 34.0f;
constexpr double kAmountStep = 0.05;
constexpr double kMessageSeconds = 8.0;
// Frames a second that a hand feels to be late, once so many frames are counted.
constexpr double kSlow = 12.0;
constexpr int kSlowFrames = 20;
constexpr ImGuiWindowFlags kPlain = ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove |
                                    ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus;

constexpr const char* kShowsWhen[] = {"shows at once", "shows with the next depth map",
                                      "shows with the next motion", "changes no picture"};

/// What a number of a parameter counts, for its slider.
const char* unitOf(const std::string& name) {
    if (name == "rotate_x_boundary" || name == "rotate_y_boundary") return "°";
    if (name == "rotate_z_trans" || name == "far_offset_ext") return " units";
    if (name == "guided_filter_rx" || name == "guided_filter_ry") return " cells";
    return "";
}

/// Two per cent signs for one: a format.
std::string asFormat(const std::string& text) {
    std::string format;
    for (const char c : text) format += c == '%' ? "%%" : std::string(1, c);
    return format;
}

void windowAt(const char* name, ImVec2 from, ImVec2 size, ImGuiWindowFlags more = 0) {
    ImGui::SetNextWindowPos(from);
    ImGui::SetNextWindowSize(size);
    ImGui::Begin(name, nullptr, kPlain | more);
}

void tooltip(const char* text) {
    if (ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled)) ImGui::SetTooltip("%s", text);
}

/// Goes on in the same line where a button of this label fits there.
void goOn(const char* label, float gap) {
    const float width = ImGui::CalcTextSize(label).x + 2.0f * ImGui::GetStyle().FramePadding.x;
    const float end = ImGui::GetWindowPos().x + ImGui::GetWindowContentRegionMax().x;
    if (ImGui::GetItemRectMax().x + gap + width <= end) ImGui::SameLine(0.0f, gap);
}

/// A button that looks held while `on`.
bool toggle(const char* label, bool on) {
    if (on) ImGui::PushStyleColor(ImGuiCol_Button, ImGui::GetStyleColorVec4(ImGuiCol_ButtonActive));
    const bool pressed = ImGui::Button(label);
    if (on) ImGui::PopStyleColor();
    return pressed;
}

}  // namespace

void Tuner::layOut() {
    const ImVec2 display = ImGui::GetIO().DisplaySize;
    const float panel = std::min(kPanelWidth * m_scale, 0.5f * display.x);
    const float stages = m_show_stages ? std::min(kStagesWidth * m_scale, 0.25f * display.x) : 0.0f;
    const float status = kStatusHeight * m_scale;
    const float tools = std::max(m_tools_height, kToolbarHeight * m_scale);
    const float low = display.y - status;

    windowAt("panel", {0.0f, 0.0f}, {panel, low}, ImGuiWindowFlags_NoScrollbar);
    if (ImGui::BeginTabBar("tabs")) {
        const auto tab = [this](const char* name, void (Tuner::*content)()) {
            const bool open = ImGui::BeginTabItem(name);
            note(std::string("tab ") + name, open ? "open" : "");
            if (!open) return;
            ImGui::BeginChild("content", {0.0f, 0.0f});
            (this->*content)();
            ImGui::EndChild();
            ImGui::EndTabItem();
        };
        tab("Tune", &Tuner::tunePanel);
        tab("Motion", &Tuner::motionPanel);
        tab("Profiles", &Tuner::profilesPanel);
        tab("Export", &Tuner::exportPanel);
        ImGui::EndTabBar();
    }
    ImGui::End();

    windowAt("tools", {panel, 0.0f}, {display.x - panel, tools}, ImGuiWindowFlags_NoScrollbar);
    toolbar();
    ImGui::End();

    pictureArea({panel, tools}, {display.x - panel - stages, low - tools});
    if (m_show_stages) {
        windowAt("stages", {display.x - stages, tools}, {stages, low - tools});
        stagesPanel(stages);
        ImGui::End();
    }
    windowAt("status", {0.0f, low}, {display.x, status}, ImGuiWindowFlags_NoScrollbar);
    statusLine(status);
    ImGui::End();
    if (m_show_timings) timingsPanel();
    if (m_show_keys) keysPanel();
}

void Tuner::toolbar() {
    const float gap = ImGui::GetStyle().ItemSpacing.x, wide_gap = 16.0f * m_scale;
    Show& show = m_bench.show;
    for (size_t slot = 0; slot < 2; ++slot) {
        const char* const name = slot == 0 ? "A" : "B";
        if (slot > 0) goOn(name, gap);
        if (toggle(name, m_bench.active == slot)) m_bench.active = slot;
        note(name, m_bench.active == slot ? "active" : "");
        tooltip("the settings that are changed (X flips)");
    }
    const std::string copy = m_bench.active == 0 ? "A → B" : "B → A";
    goOn(copy.c_str(), gap);
    if (ImGui::Button(copy.c_str())) m_bench.copyToOther();
    note("copy", copy);
    tooltip("these settings replace the other ones");
    const auto shows = [&](const char* label, Show what) {
        goOn(label, gap);
        if (toggle(label, show == what)) show = show == what ? Show::kOne : what;
    };
    shows("Split", Show::kSplit);
    note("split", show == Show::kSplit ? app::formatted("%.3f", m_bench.split) : "");
    tooltip("A on the left of the line, B on the right (S)");
    shows("Difference ×8", Show::kDifference);
    note("difference", show == Show::kDifference ? "on" : "");
    tooltip("how far A and B are apart, eight times as much (D)");
    goOn("Undo", wide_gap);
    ImGui::BeginDisabled(!m_bench.canUndo());
    if (ImGui::Button("Undo")) m_bench.undo();
    ImGui::EndDisabled();
    note("undo", m_bench.canUndo() ? "possible" : "");
    tooltip("Ctrl+Z");
    goOn("Redo", gap);
    ImGui::BeginDisabled(!m_bench.canRedo());
    if (ImGui::Button("Redo")) m_bench.redo();
    ImGui::EndDisabled();
    note("redo", m_bench.canRedo() ? "possible" : "");
    tooltip("Ctrl+Shift+Z");
    const auto turns = [&](const char* label, const char* name, const char* hint, bool* on, float before) {
        goOn(label, before);
        if (toggle(label, *on)) *on = !*on;
        note(name, *on ? "on" : "");
        tooltip(hint);
    };
    turns("Pivot by click", "pick", "then click what is to stay in place (P)", &m_picking, wide_gap);
    turns("Mesh", "mesh", "the lines of the bent mesh (W)", &m_wires, gap);
    turns("Stages", "stages", "what becomes of photo and depth on the way (G)", &m_show_stages, gap);
    turns("Timings", "timings", "what a frame takes (T)", &m_show_timings, gap);
    turns("Keys", "keys", "what the keys do (F1)", &m_show_keys, gap);
    m_tools_height = std::max(kToolbarHeight * m_scale,
                              ImGui::GetItemRectMax().y - ImGui::GetWindowPos().y + 6.0f * m_scale);
}

void Tuner::pictureArea(ImVec2 from, ImVec2 room) {
    const float margin = 8.0f * m_scale;
    from = {from.x + margin, from.y + margin};
    room = {std::max(1.0f, room.x - 2.0f * margin), std::max(1.0f, room.y - 2.0f * margin)};
    m_room = {static_cast<int>(room.x), static_cast<int>(room.y)};
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {0.0f, 0.0f});
    windowAt("picture", from, room, ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoScrollWithMouse);
    ImGui::PopStyleVar();
    const Picture& shown = m_pictures[m_bench.active];
    const Picture& other = m_pictures[1 - m_bench.active];
    if (!shown.ready()) {
        const std::string doing = m_preparing.doing();
        const std::string why = m_message_is_failure ? m_message + "\n\n" : "";
        const std::string text = !doing.empty() ? doing + " ..."
                                 : m_bench.input.photo.empty()
                                     ? "drop a photo here"
                                     : why + "drop another photo, or a depth map for it, here";
        const ImVec2 size = ImGui::CalcTextSize(text.c_str(), nullptr, false, 0.7f * room.x);
        ImGui::SetCursorPos({(room.x - size.x) * 0.5f, (room.y - size.y) * 0.5f});
        ImGui::PushTextWrapPos((room.x + size.x) * 0.5f + 1.0f);
        ImGui::TextUnformatted(text.c_str());
        ImGui::PopTextWrapPos();
        ImGui::End();
        return;
    }
    const Size size = shown.prepared().size;
    const Placed placed =
        placedIn(from, room, static_cast<float>(size.width), static_cast<float>(size.height));
    ImDrawList* const list = ImGui::GetWindowDrawList();
    const auto whole = [&](GLuint texture) { list->AddImage(asImTexture(texture), placed.from, placed.to); };
    const bool both = other.ready() && m_bench.show != Show::kOne;
    if (m_wires) {
        whole(m_extra->wires(shown.parallax(), shown.textureSize()).name());
    } else if (both && m_bench.show == Show::kDifference) {
        whole(m_extra->difference(m_pictures[0].texture(), m_pictures[1].texture(), shown.textureSize())
                  .name());
    } else if (both) {
        const auto part = static_cast<float>(m_bench.split);
        const float line = placed.from.x + part * (placed.to.x - placed.from.x);
        list->AddImage(asImTexture(m_pictures[0].texture()), placed.from, {line, placed.to.y}, {0, 0},
                       {part, 1});
        list->AddImage(asImTexture(m_pictures[1].texture()), {line, placed.from.y}, placed.to, {part, 0},
                       {1, 1});
        list->AddLine({line, placed.from.y}, {line, placed.to.y}, IM_COL32(255, 255, 255, 220),
                      2.0f * m_scale);
        const float inset = 6.0f * m_scale, width = ImGui::CalcTextSize("B").x;
        const auto named = [&](const char* name, float x) {
            const ImVec2 at = {x, placed.from.y + 2.0f * inset};
            // Readable on a white wall too.
            list->AddRectFilled({at.x - inset, at.y - inset},
                                {at.x + width + inset, at.y + ImGui::GetTextLineHeight() + inset},
                                IM_COL32(0, 0, 0, 160), 3.0f * m_scale);
            list->AddText(at, IM_COL32_WHITE, name);
        };
        named("A", placed.from.x + 2.0f * inset);
        named("B", placed.to.x - 2.0f * inset - width);
    } else {
        whole(shown.texture());
    }
    onPicture(placed);
    ImGui::End();
}

void Tuner::onPicture(const Placed& placed) {
    const ImVec2 size = {placed.to.x - placed.from.x, placed.to.y - placed.from.y};
    ImGui::SetCursorScreenPos(placed.from);
    ImGui::InvisibleButton("view", {std::max(1.0f, size.x), std::max(1.0f, size.y)});
    const Prepared& prepared = m_pictures[m_bench.active].prepared();
    m_controls.note("picture", placed.from, placed.to,
                    app::formatted("%dx%d", prepared.size.width, prepared.size.height));
    const ImGuiIO& io = ImGui::GetIO();
    const double x = static_cast<double>((io.MousePos.x - placed.from.x) / size.x);
    const double y = static_cast<double>((io.MousePos.y - placed.from.y) / size.y);
    constexpr double kSplitReach = 0.015;
    const bool splits = m_bench.show == Show::kSplit && !m_wires && m_pictures[1 - m_bench.active].ready();
    if (ImGui::IsItemClicked()) {
        if (m_picking)
            pickPivot(x, y);
        else
            m_dragging_split = splits && std::abs(x - m_bench.split) < kSplitReach;
    }
    if (!ImGui::IsMouseDown(ImGuiMouseButton_Left)) m_dragging_split = false;
    if (m_dragging_split) m_bench.split = std::clamp(x, 0.0, 1.0);
    if (!ImGui::IsItemHovered()) return;
    if (m_picking || (splits && std::abs(x - m_bench.split) < kSplitReach))
        ImGui::SetMouseCursor(m_picking ? ImGuiMouseCursor_Hand : ImGuiMouseCursor_ResizeEW);
    const bool moved = io.MouseDelta.x != 0.0f || io.MouseDelta.y != 0.0f;
    // Whoever aims wants the picture to stay.
    if (moved && !m_picking && !m_dragging_split) m_gaze.point({2.0 * x - 1.0, 1.0 - 2.0 * y}, m_now);
    if (io.MouseWheel != 0.0f) {
        double& amount = m_bench.tuning().amount;
        amount = std::clamp(amount + kAmountStep * static_cast<double>(io.MouseWheel), 0.0, 1.0);
        amount = std::round(amount * 1000.0) / 1000.0;
        say(app::formatted("amount %.2f", amount));
    }
}

void Tuner::parameterSliders() {
    const LibParam values = valuesInForce();
    const LibParam set = tunedSet(m_bench.tuning());
    const Picture& picture = m_pictures[m_bench.active];
    // What would be drawn with if nobody set it.
    Tuning open = m_bench.tuning();
    open.parameters.clear();
    const LibParam usual = inForce(open, picture.ready() ? picture.prepared().planned.plan.parameters
                                                         : std::vector<std::pair<std::string, double>>());
    for (size_t i = 0; i < ParallaxView::parameters().size(); ++i) {
        const ParameterInfo& info = ParallaxView::parameters()[i];
        const Parameter& parameter = kParameters[i];
        const SliderScale scale(info.minimum, info.maximum, parameter.of(set), info.integer);
        const bool is_set = m_bench.tuning().parameters.count(info.name) > 0;
        const double value = shortest(parameter.of(values));
        const double without = is_set ? parameter.of(set) : parameter.of(usual);
        SliderValue shown;
        shown.name = info.name;
        shown.text = asFormat(app::formatted("%.4g%s", value, unitOf(info.name)));
        shown.hint = app::formatted(
            "%s\n%g to %g; %s\n%s", info.meaning, info.minimum, info.maximum,
            kShowsWhen[static_cast<size_t>(info.takes_effect)],
            is_set ? app::formatted("double or right click: %.4g again, as nobody set it", without).c_str()
                   : "nobody has set it: gray");
        shown.part = scale.partOf(value);
        shown.usual = scale.partOf(without);
        shown.is_set = is_set;
        double part = shown.part;
        switch (slider(shown, 170.0f * m_scale, &part)) {
            case SliderEvent::kMoved: setParameter(info.name, scale.valueAt(part), &m_bench.tuning()); break;
            case SliderEvent::kReset: m_bench.tuning().parameters.erase(info.name); break;
            case SliderEvent::kNone: break;
        }
        note(info.name, app::formatted("%.6g%s", value, is_set ? " set" : ""));
    }
}

template <typename Choose>
void Tuner::choice(const char* label, const char* hint, const std::vector<const char*>& names, size_t chosen,
                   Choose choose) {
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted(label);
    tooltip(hint);
    ImGui::SameLine(170.0f * m_scale);
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0) ImGui::SameLine();
        ImGui::PushID(label);
        if (toggle(names[i], i == chosen)) choose(i);
        ImGui::PopID();
        note(std::string(label) + " " + names[i], i == chosen ? "chosen" : "");
        tooltip(hint);
    }
}

void Tuner::depthChoices() {
    Tuning& tuning = m_bench.tuning();
    choice("near is", "which end of the depth map is near: found by the photo, its dark or its bright end",
           {"found", "dark", "bright"},
           !tuning.invert_depth   ? 0
           : *tuning.invert_depth ? 1
                                  : 2,
           [&](size_t i) {
               tuning.invert_depth.reset();
               if (i > 0) tuning.invert_depth = i == 1;
           });
    choice("holes",
           "pixels without a depth\nauto: filled from the far side where they certainly have none\n"
           "fill: also where the lowest or highest level may stand for \"unknown\"\nkeep: left as they are",
           {kHolesNames[0], kHolesNames[1], kHolesNames[2]}, static_cast<size_t>(tuning.holes),
           [&](size_t i) { tuning.holes = static_cast<media::Holes>(i); });
    choice("edges",
           "clean: near things stay whole where they meet far ones\n"
           "soft: the depth map is only smoothed along the photo's edges",
           {"clean", "soft"}, tuning.clean_edges ? 0 : 1, [&](size_t i) { tuning.clean_edges = i == 0; });
    choice("grid", "the mesh's cells: fine follows the depth closest, coarse is drawn fastest",
           {kGridNames[0], kGridNames[1], kGridNames[2]}, static_cast<size_t>(tuning.grid),
           [&](size_t i) { tuning.grid = static_cast<Grid>(i); });
    choice(
        "samples", "samples a pixel: more are smoother at edges, 1 is drawn fastest",
        {"auto", "1", "2", "4", "8"},
        tuning.samples == kAutoSamples ? 0 : static_cast<size_t>(std::lround(std::log2(tuning.samples))) + 1,
        [&](size_t i) { tuning.samples = i == 0 ? kAutoSamples : 1 << (i - 1); });
}

void Tuner::frameChoices() {
    Tuning& tuning = m_bench.tuning();
    const bool set = tuning.parameters.count("rotate_z_trans") > 0;
    const size_t pivot = set ? 3 : static_cast<size_t>(tuning.pivot);
    choice("pivot",
           "what stays in place while the view moves\nsubject: the nearest large thing near the middle\n"
           "point: what you click in the picture\ntuned: the distance of the set of parameters",
           {"subject", "point", "tuned"}, pivot, [&](size_t i) {
               if (i == 1)
                   m_picking = true;
               else
                   setPivot(static_cast<Pivot>(i), 0.5, 0.5, &tuning);
           });
    if (tuning.pivot == Pivot::kPoint && !set) {
        ImGui::SameLine();
        ImGui::TextDisabled("%.2f, %.2f", tuning.pivot_x, tuning.pivot_y);
        note("pivot place", app::formatted("%.3f,%.3f", tuning.pivot_x, tuning.pivot_y));
    }
    const bool framed = tuning.parameters.count("fov_scale") > 0;
    choice("frame",
           "no border: as much of the photo as never shows its border\nas now: fov_scale keeps this value",
           {"no border", "as now"}, framed ? 1 : 0, [&](size_t i) {
               if (i == 0)
                   tuning.parameters.erase("fov_scale");
               else
                   setParameter("fov_scale", shortest(static_cast<double>(valuesInForce().fov_scale)),
                                &tuning);
           });
    const Picture& picture = m_pictures[m_bench.active];
    if (picture.ready() && picture.prepared().planned.plan.swing < 1.0)
        ImGui::TextWrapped("The view swings %.2f times as far as asked, so that no border shows.",
                           picture.prepared().planned.plan.swing);
    choice("orientation",
           "the set of parameters that all values start from\n"
           "first: a host asks for it with 4 or 7; second: with any other orientation",
           {"first set", "second set"}, takesFirstSet(static_cast<uint32_t>(tuning.orientation)) ? 0 : 1,
           [&](size_t i) { tuning.orientation = i == 0 ? 4 : 0; });
}

void Tuner::tunePanel() {
    parameterSliders();
    ImGui::Separator();
    frameChoices();
    ImGui::Separator();
    depthChoices();
    const Picture& picture = m_pictures[m_bench.active];
    if (!picture.ready()) return;
    ImGui::Separator();
    for (const std::string& line : picture.prepared().notes) ImGui::TextWrapped("%s", line.c_str());
}

void Tuner::motionPanel() {
    Tuning& tuning = m_bench.tuning();
    choice("moved by",
           "hand: pointer, touch pad and arrow keys\nmotion: the one that is chosen below\n"
           "recorded: the hand that R recorded, or a path of your own",
           {"hand", "motion", "recorded"}, static_cast<size_t>(m_bench.source), [&](size_t i) {
               if (i == 2 && m_bench.hand.empty())
                   say("nothing is recorded yet: R starts and stops, or draw a path");
               else
                   m_bench.source = static_cast<Source>(i);
           });
    ImGui::Checkbox("the motion goes on while the hand rests", &m_bench.idles);
    note("idle", m_bench.idles ? "on" : "");
    ImGui::Separator();
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted("motion");
    ImGui::SameLine(90.0f * m_scale);
    ImGui::SetNextItemWidth(-1.0f);
    if (ImGui::BeginCombo("##named", tuning.motion.c_str())) {
        for (const app::NamedMotion& motion : app::motions())
            if (ImGui::Selectable(app::formatted("%s: %s", motion.name, motion.meaning).c_str())) {
                tuning.motion = motion.name;
                m_motion_failure.clear();
            }
        ImGui::EndCombo();
    }
    note("motion", tuning.motion);
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted("or as");
    ImGui::SameLine(90.0f * m_scale);
    ImGui::SetNextItemWidth(-1.0f);
    if (ImGui::InputTextWithHint("##expression", "x=sin(1) y=0.5cos(2), then Enter", m_motion_text.data(),
                                 m_motion_text.size(), ImGuiInputTextFlags_EnterReturnsTrue)) {
        try {
            app::parseMotion(m_motion_text.data());
            tuning.motion = m_motion_text.data();
            m_motion_failure.clear();
        } catch (const app::UsageError& error) {
            m_motion_failure = error.what();
        }
    }
    note("expression", m_motion_text.data());
    if (!m_motion_failure.empty()) ImGui::TextWrapped("%s", m_motion_failure.c_str());

    const auto whole = [&](const char* name, int* value, int least, int most) {
        ImGui::AlignTextToFramePadding();
        ImGui::TextUnformatted(name);
        ImGui::SameLine(90.0f * m_scale);
        ImGui::SetNextItemWidth(-1.0f);
        ImGui::PushID(name);
        int changed = *value;
        if (ImGui::DragInt("##whole", &changed, 0.25f, least, most, "%d", ImGuiSliderFlags_AlwaysClamp))
            *value = std::clamp(changed, least, most);
        ImGui::PopID();
        note(name, std::to_string(*value));
    };
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted("amount");
    ImGui::SameLine(90.0f * m_scale);
    ImGui::SetNextItemWidth(-1.0f);
    auto amount = static_cast<float>(tuning.amount);
    const bool is_recorded = m_bench.source == Source::kRecorded;
    ImGui::BeginDisabled(is_recorded);
    if (ImGui::SliderFloat("##amount", &amount, 0.0f, 1.0f, "%.2f", ImGuiSliderFlags_AlwaysClamp))
        tuning.amount = std::round(static_cast<double>(amount) * 100.0) / 100.0;
    ImGui::EndDisabled();
    note("amount", app::formatted("%.3g", tuning.amount));
    tooltip(is_recorded ? "what was recorded goes as far as the hand went"
                        : "how far the view swings; the wheel over the picture does the same");
    whole("frames", &tuning.frames, 1, 99999);
    whole("fps", &tuning.fps, 1, 240);
    ImGui::Separator();

    if (toggle(m_recording ? "Stop (R)" : "Record the hand (R)", m_recording)) toggleRecording();
    note("record", m_recording ? app::formatted("%.1f s", m_take.seconds()) : "");
    ImGui::SameLine();
    if (toggle(m_bench.playing ? "Pause" : "Play", false)) m_bench.playing = !m_bench.playing;
    note("play", m_bench.playing ? "playing" : "");
    const int frames = m_bench.frames();
    int frame = m_bench.frame();
    ImGui::SetNextItemWidth(-1.0f);
    if (ImGui::SliderInt("##scrub", &frame, 0, frames - 1, "frame %d", ImGuiSliderFlags_AlwaysClamp)) {
        m_bench.playing = false;
        m_bench.goToFrame(frame);
        if (m_bench.source == Source::kHand) m_bench.source = Source::kMotion;
    }
    note("scrub", app::formatted("%d of %d", m_bench.frame(), frames));
    ImGui::TextDisabled("%.2f seconds a loop", m_bench.loopSeconds());

    ImGui::Separator();
    ImGui::TextUnformatted("A path of your own");
    ImGui::SameLine();
    ImGui::BeginDisabled(m_bench.path_points.empty());
    if (ImGui::SmallButton("clear")) {
        m_bench.path_points.clear();
        usePath();
    }
    ImGui::EndDisabled();
    note("clear path", "");
    std::vector<app::Position> curve;
    constexpr int kCurve = 128;
    const app::Motion motion = m_bench.motion();
    for (int i = 0; i <= kCurve; ++i) curve.push_back(motion.place(static_cast<double>(i) / kCurve));
    const float side = std::min(ImGui::GetContentRegionAvail().x, 240.0f * m_scale);
    if (pathEditor(side, curve, m_position, &m_bench.path_points, &m_controls)) {
        usePath();
        if (!m_bench.hand.empty()) m_bench.source = Source::kRecorded;
    }
}

void Tuner::profilesPanel() {
    ImGui::TextWrapped("Settings with a name, kept in %s.", app::printable(m_options.profiles).c_str());
    ImGui::SetNextItemWidth(-80.0f * m_scale);
    const bool entered =
        ImGui::InputTextWithHint("##name", "a name", m_profile_name.data(), m_profile_name.size(),
                                 ImGuiInputTextFlags_EnterReturnsTrue);
    note("profile name", m_profile_name.data());
    ImGui::SameLine();
    const bool pressed = ImGui::Button("Save");
    note("profile save", "");
    if (entered || pressed)
        attempt([this] {
            m_profiles.save(m_profile_name.data(), m_bench.tuning());
            m_profile_names = m_profiles.names();
            say(std::string("saved as ") + m_profile_name.data());
        });
    ImGui::Separator();
    for (const std::string& name : m_profile_names) {
        ImGui::PushID(name.c_str());
        if (ImGui::Button("Load"))
            attempt([&] {
                m_bench.tuning() = m_profiles.load(name);
                std::snprintf(m_profile_name.data(), m_profile_name.size(), "%s", name.c_str());
                say("loaded " + name);
            });
        note("load " + name, "");
        ImGui::SameLine();
        ImGui::BeginDisabled(!ImGui::GetIO().KeyCtrl);
        const bool removed = ImGui::Button("Remove");
        ImGui::EndDisabled();
        tooltip("with Ctrl held");
        ImGui::SameLine();
        ImGui::TextUnformatted(name.c_str());
        ImGui::PopID();
        if (!removed) continue;
        attempt([&] { m_profiles.remove(name); });
        m_profile_names = m_profiles.names();
        break;
    }
    if (m_profile_names.empty()) ImGui::TextDisabled("none yet");
}

void Tuner::exportPanel() {
    const bool has_photo = !m_bench.input.photo.empty();
    ImGui::BeginDisabled(!has_photo);
    if (ImGui::Button("Export all (Ctrl+E)")) attempt([this] { exportAll(); });
    note("export", "");
    ImGui::SameLine();
    ImGui::BeginDisabled(m_clip != nullptr);
    if (ImGui::Button(m_clip == nullptr ? "with a clip" : "clip ...")) attempt([this] { makeClip(); });
    ImGui::EndDisabled();
    note("clip", m_clip != nullptr ? "making" : "");
    ImGui::SameLine();
    if (ImGui::Button("Screenshot (Ctrl+S)")) attempt([this] { saveScreenshot(); });
    note("screenshot", "");
    ImGui::EndDisabled();
    ImGui::TextWrapped("to %s", app::printable(exportFolder()).c_str());
    int& longest = m_bench.tuning().longest;
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted("picture");
    ImGui::SameLine(90.0f * m_scale);
    if (toggle("as the window", longest == 0)) longest = 0;
    for (const int side : {720, 1280, 1920}) {
        ImGui::SameLine();
        if (toggle(std::to_string(side).c_str(), longest == side)) longest = side;
        note("size " + std::to_string(side), longest == side ? "chosen" : "");
    }
    ImGui::Separator();
    if (!has_photo) return;
    const Exported all = exported();
    const std::pair<const char*, std::string> texts[] = {
        {"command line", commandLine(all)}, {"with the profile", profileCommandLine(all)},
        {"adb setprop", setpropLines(all)}, {"C++", cppSnippet(all)},
        {"Java", javaSnippet(all)},         {"profile.json", media::profileText(profileOf(all.tuning))},
    };
    const int count = static_cast<int>(std::size(texts));
    for (int i = 0; i < count; ++i) {
        if (i % 3 != 0) ImGui::SameLine();
        if (toggle(texts[i].first, m_export_tab == i)) m_export_tab = i;
        note(std::string("text ") + texts[i].first, m_export_tab == i ? "open" : "");
    }
    const std::string& text = texts[std::clamp(m_export_tab, 0, count - 1)].second;
    if (ImGui::Button("Copy")) {
        ImGui::SetClipboardText(text.c_str());
        say("copied");
    }
    note("copy text", "");
    ImGui::BeginChild("text", {0.0f, 0.0f}, true, ImGuiWindowFlags_HorizontalScrollbar);
    if (m_export_tab < 2)
        ImGui::TextWrapped("%s", text.c_str());
    else
        ImGui::TextUnformatted(text.c_str(), text.c_str() + text.size());
    ImGui::EndChild();
}

void Tuner::stagesPanel(float width) {
    const Picture& picture = m_pictures[m_bench.active];
    if (!picture.ready() || m_stages.of > 1) return;
    const size_t count = picture.prepared().stretch ? m_stages.all.size() : m_stages.all.size() - 1;
    // All of them at once, in as many columns as make them largest.
    const ImGuiStyle& style = ImGui::GetStyle();
    const float label = ImGui::GetTextLineHeightWithSpacing() + style.ItemSpacing.y;
    const ImVec2 room = {width - 2.0f * style.WindowPadding.x,
                         ImGui::GetContentRegionAvail().y - 2.0f * label};
    const Size size = m_stages.all[0].small.size();
    const auto shown = [&](size_t columns) {
        const auto across = static_cast<float>(columns);
        const size_t rows = (count + columns - 1) / columns;
        const auto down = static_cast<float>(rows);
        const Placed placed = placedIn(
            {0.0f, 0.0f},
            {room.x / across - style.ItemSpacing.x, std::max(40.0f * m_scale, room.y / down - label)},
            static_cast<float>(size.width), static_cast<float>(size.height));
        return ImVec2(placed.to.x - placed.from.x, placed.to.y - placed.from.y);
    };
    const size_t columns = shown(2).x > shown(1).x ? 2 : 1;
    const ImVec2 drawn = shown(columns);
    for (size_t i = 0; i < count; ++i) {
        const Stage& stage = m_stages.all[i];
        if (i % columns > 0) ImGui::SameLine(style.WindowPadding.x + room.x / static_cast<float>(columns));
        ImGui::BeginGroup();
        ImGui::TextUnformatted(stage.label);
        ImGui::Image(asImTexture(stage.small.name()), drawn);
        ImGui::EndGroup();
        if (!ImGui::IsItemHovered()) continue;
        const Size large = stage.large.size();
        ImGui::BeginTooltip();
        ImGui::TextUnformatted(stage.says.c_str());
        ImGui::Image(asImTexture(stage.large.name()),
                     {static_cast<float>(large.width), static_cast<float>(large.height)});
        ImGui::EndTooltip();
    }
    if (!picture.prepared().stretch) return;
    ImGui::TextWrapped("%s", m_stages.all.back().says.c_str());
    note("stretch", m_stages.all.back().says);
}

void Tuner::timingsPanel() {
    const ImVec2 display = ImGui::GetIO().DisplaySize;
    const float top = m_tools_height + 16.0f * m_scale;
    const float height = std::min(460.0f * m_scale, display.y - top - kStatusHeight * m_scale);
    ImGui::SetNextWindowSize({320.0f * m_scale, height}, ImGuiCond_FirstUseEver);
    ImGui::SetNextWindowPos({display.x - 340.0f * m_scale, top}, ImGuiCond_FirstUseEver);
    if (ImGui::Begin("Timings", &m_show_timings, ImGuiWindowFlags_NoSavedSettings)) {
        const float curve = 34.0f * m_scale;
        plot(m_frame_times, curve);
        // What runs once for an image is a number, what runs in every frame a curve; the most frequent come
        // first.
        constexpr size_t kCurve = 8;
        std::vector<const Plot*> plots;
        for (const Plot& one : m_plots) plots.push_back(&one);
        std::stable_sort(plots.begin(), plots.end(),
                         [](const Plot* a, const Plot* b) { return a->values.size() > b->values.size(); });
        for (const Plot* const one : plots)
            if (one->values.size() >= kCurve)
                plot(*one, curve);
            else
                ImGui::TextDisabled("%s: %.2f ms", one->label.c_str(),
                                    static_cast<double>(one->values.back()));
    }
    ImGui::End();
}

void Tuner::keysPanel() {
    ImGui::SetNextWindowPos({ImGui::GetIO().DisplaySize.x * 0.5f, m_tools_height + 16.0f * m_scale},
                            ImGuiCond_FirstUseEver);
    if (ImGui::Begin("Keys", &m_show_keys,
                     ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_AlwaysAutoResize))
        for (const auto& [key, does] : keys()) {
            ImGui::TextUnformatted(key.c_str());
            ImGui::SameLine(120.0f * m_scale);
            ImGui::TextUnformatted(does.c_str());
        }
    ImGui::End();
}

void Tuner::statusLine(float height) {
    ImGui::SetCursorPosY((height - ImGui::GetTextLineHeight()) * 0.5f);
    const std::string doing = m_preparing.doing();
    std::string left = m_message;
    if (!m_message_is_failure && m_now - m_message_time > kMessageSeconds) left.clear();
    const double rate = m_frame_times.rate();
    const Picture& picture = m_pictures[m_bench.active];
    const std::string size = picture.ready() ? app::formatted("%d x %d   ", picture.prepared().size.width,
                                                              picture.prepared().size.height)
                                             : std::string();
    const std::string right =
        size + app::formatted("%s %.2f, %.2f   %.0f frames/s", m_bench.active == 0 ? "A" : "B", m_position.x,
                              m_position.y, rate);
    const float right_at = ImGui::GetWindowWidth() - ImGui::CalcTextSize(right.c_str()).x - 12.0f * m_scale;
    const ImVec2 corner = ImGui::GetWindowPos();
    ImGui::PushClipRect(corner, {corner.x + right_at - 12.0f * m_scale, corner.y + height}, true);
    if (!doing.empty()) {
        constexpr const char* kTurns[] = {"|", "/", "-", "\\"};
        ImGui::Text("%s %s ...", kTurns[static_cast<int>(m_now * 6.0) % 4], doing.c_str());
        ImGui::SameLine();
    }
    const Tuning& tuning = m_bench.tuning();
    const bool is_plain = tuning.samples == 1 && tuning.grid == Grid::kCoarse;
    if (m_message_is_failure && !left.empty())
        ImGui::TextColored({1.0f, 0.5f, 0.4f, 1.0f}, "%s", left.c_str());
    else if (!left.empty() || !doing.empty() || is_plain || rate >= kSlow || m_frame < kSlowFrames)
        ImGui::TextUnformatted(left.c_str());
    else
        ImGui::TextDisabled("slow on this machine: samples 1 and grid coarse are drawn faster");
    ImGui::PopClipRect();
    // One that is too long for the line.
    if (!left.empty() && ImGui::IsItemHovered()) {
        ImGui::BeginTooltip();
        ImGui::PushTextWrapPos(0.6f * ImGui::GetIO().DisplaySize.x);
        ImGui::TextUnformatted(left.c_str());
        ImGui::PopTextWrapPos();
        ImGui::EndTooltip();
    }
    note("status", left);
    note("doing", doing);
    note("frame", std::to_string(m_frame));
    note("depth", m_pictures[m_bench.active].ready() ? m_pictures[m_bench.active].prepared().depth_file : "");
    note("process", std::to_string(getpid()));
    note("view", app::formatted("%.3f,%.3f", m_position.x, m_position.y));

    ImGui::SameLine(right_at);
    ImGui::TextDisabled("%s", right.c_str());
}

}  // namespace quorvane::tuner
