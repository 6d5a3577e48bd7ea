#include <algorithm>
#include <cmath>
#include <optional>

#include "apps/tuner/window/widgets.h"

namespace quorvane::tuner {
namespace {

constexpr size_t kMostPoints = 64;

std::optional<size_t> nearest(const std::vector<app::Position>& points, double x, double y, double reach) {
    std::optional<size_t> found;
    for (size_t i = 0; i < points.size(); ++i) {
        const double away = std::hypot(points[i].x - x, points[i].y - y);
        if (away > reach) continue;
        reach = away;
        found = i;
    }
    return found;
}

}  // namespace

bool pathEditor(float side, const std::vector<app::Position>& curve, app::Position at,
                std::vector<app::Position>* points, ControlList* controls) {
    const ImVec2 from = ImGui::GetCursorScreenPos(), to = {from.x + side, from.y + side};
    ImGui::InvisibleButton("path", {side, side},
                           ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonRight);
    controls->note("path", std::to_string(points->size()));
    // A margin, so that a point at the edge can be taken.
    const float margin = 0.06f * side, half = side * 0.5f - margin;
    const auto on_screen = [&](const app::Position& place) {
        return ImVec2(from.x + side * 0.5f + static_cast<float>(place.x) * half,
                      from.y + side * 0.5f - static_cast<float>(place.y) * half);
    };
    const ImVec2 mouse = ImGui::GetIO().MousePos;
    const double x = std::clamp(static_cast<double>((mouse.x - from.x - side * 0.5f) / half), -1.0, 1.0);
    const double y = std::clamp(static_cast<double>((from.y + side * 0.5f - mouse.y) / half), -1.0, 1.0);
    constexpr double kReach = 0.12;

    bool changed = false;
    ImGuiStorage* const storage = ImGui::GetStateStorage();
    const ImGuiID held_id = ImGui::GetID("held");
    if (ImGui::IsItemClicked(ImGuiMouseButton_Left)) {
        std::optional<size_t> held = nearest(*points, x, y, kReach);
        if (!held && points->size() < kMostPoints) {
            app::Position place;
            place.x = x;
            place.y = y;
            points->push_back(place);
            held = points->size() - 1;
            changed = true;
        }
        storage->SetInt(held_id, held ? static_cast<int>(*held) : -1);
    }
    const int held = storage->GetInt(held_id, -1);
    if (ImGui::IsItemActive() && ImGui::IsMouseDragging(ImGuiMouseButton_Left, 1.0f) && held >= 0 &&
        static_cast<size_t>(held) < points->size()) {
        app::Position& place = (*points)[static_cast<size_t>(held)];
        changed = changed || place.x != x || place.y != y;
        place.x = x;
        place.y = y;
    }
    if (ImGui::IsItemClicked(ImGuiMouseButton_Right))
        if (const std::optional<size_t> gone = nearest(*points, x, y, kReach)) {
            points->erase(points->begin() + static_cast<std::ptrdiff_t>(*gone));
            changed = true;
        }
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("click: a new point; drag: move it; right click: remove it");

    ImDrawList* const list = ImGui::GetWindowDrawList();
    list->AddRectFilled(from, to, ImGui::GetColorU32(ImGuiCol_FrameBg), 3.0f);
    const ImU32 lines = ImGui::GetColorU32(ImGuiCol_TextDisabled, 0.4f);
    list->AddRect(on_screen({-1.0, 1.0}), on_screen({1.0, -1.0}), lines);
    list->AddLine(on_screen({-1.0, 0.0}), on_screen({1.0, 0.0}), lines);
    list->AddLine(on_screen({0.0, 1.0}), on_screen({0.0, -1.0}), lines);
    for (size_t i = 1; i < curve.size(); ++i)
        list->AddLine(on_screen(curve[i - 1]), on_screen(curve[i]), ImGui::GetColorU32(ImGuiCol_PlotLines),
                      1.5f);
    for (const app::Position& point : *points)
        list->AddCircleFilled(on_screen(point), 0.025f * side, ImGui::GetColorU32(ImGuiCol_ButtonActive));
    list->AddCircleFilled(on_screen(at), 0.022f * side, IM_COL32(255, 200, 64, 255));
    return changed;
}

}  // namespace quorvane::tuner
