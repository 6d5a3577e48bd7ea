#include "apps/tuner/window/widgets.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "apps/quorvane/terminal/text.h"

namespace quorvane::tuner {

void ControlList::note(const std::string& name, const std::string& value) {
    note(name, ImGui::GetItemRectMin(), ImGui::GetItemRectMax(), value);
}

void ControlList::note(const std::string& name, ImVec2 from, ImVec2 to, const std::string& value) {
    m_controls[name] = {from, to, value};
}

std::string ControlList::lines() const {
    std::string text;
    for (const auto& [name, control] : m_controls) {
        const nlohmann::ordered_json line = {{"name", name},
                                             {"value", control.value},
                                             {"x", static_cast<int>(control.from.x)},
                                             {"y", static_cast<int>(control.from.y)},
                                             {"width", static_cast<int>(control.to.x - control.from.x)},
                                             {"height", static_cast<int>(control.to.y - control.from.y)}};
        text += line.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    }
    return text;
}

SliderEvent slider(const SliderValue& value, float label_width, double* part) {
    ImGui::PushID(value.name);
    ImGui::AlignTextToFramePadding();
    if (value.is_set)
        ImGui::TextUnformatted(value.name);
    else
        ImGui::TextDisabled("%s", value.name);
    ImGui::SameLine(label_width);
    ImGui::SetNextItemWidth(-1.0f);
    ImGui::BeginDisabled(!value.enabled);
    auto place = static_cast<float>(value.part);
    SliderEvent event = SliderEvent::kNone;
    // The text is the format, so a per cent sign in it would be read as one.
    if (ImGui::SliderFloat("##value", &place, 0.0f, 1.0f, value.text.c_str(),
                           ImGuiSliderFlags_AlwaysClamp | ImGuiSliderFlags_NoInput)) {
        *part = static_cast<double>(place);
        event = SliderEvent::kMoved;
    }
    const ImVec2 from = ImGui::GetItemRectMin(), to = ImGui::GetItemRectMax();
    const bool hovered = ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled);
    ImGui::EndDisabled();
    // Where the grab's middle is for that value.
    const float half_grab = ImGui::GetStyle().GrabMinSize * 0.5f + 2.0f;
    const float mark =
        from.x + half_grab + static_cast<float>(value.usual) * (to.x - from.x - 2.0f * half_grab);
    ImDrawList* const list = ImGui::GetWindowDrawList();
    const ImU32 colour = ImGui::GetColorU32(ImVec4(1.0f, 0.78f, 0.25f, 0.95f));
    const float size = (to.y - from.y) * 0.22f;
    list->AddTriangleFilled({mark - size, to.y}, {mark + size, to.y}, {mark, to.y - 1.4f * size}, colour);
    if (hovered) ImGui::SetTooltip("%s", value.hint.c_str());
    if (hovered && value.enabled &&
        (ImGui::IsMouseDoubleClicked(ImGuiMouseButton_Left) || ImGui::IsMouseClicked(ImGuiMouseButton_Right)))
        event = SliderEvent::kReset;
    ImGui::PopID();
    return event;
}

void plot(const Plot& plot, float height) {
    if (plot.values.empty()) return;
    const std::vector<float> values(plot.values.begin(), plot.values.end());
    const float most = *std::max_element(values.begin(), values.end());
    const std::string newest = app::formatted("%.2f ms, at most %.2f", static_cast<double>(values.back()),
                                              static_cast<double>(most));
    ImGui::TextDisabled("%s: %s", plot.label.c_str(), newest.c_str());
    ImGui::PushID(plot.label.c_str());
    ImGui::PlotLines("##plot", values.data(), static_cast<int>(values.size()), 0, nullptr, 0.0f, 1.1f * most,
                     {ImGui::GetContentRegionAvail().x, height});
    ImGui::PopID();
}

Placed placedIn(ImVec2 from, ImVec2 room, float width, float height) {
    const float scale = std::min(room.x / width, room.y / height);
    const ImVec2 size = {width * scale, height * scale};
    const ImVec2 corner = {from.x + (room.x - size.x) * 0.5f, from.y + (room.y - size.y) * 0.5f};
    return {corner, {corner.x + size.x, corner.y + size.y}};
}

}  // namespace quorvane::tuner
