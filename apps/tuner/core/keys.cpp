#include "apps/tuner/core/keys.h"

namespace quorvane::tuner {

const std::vector<std::pair<std::string, std::string>>& keys() {
    static const std::vector<std::pair<std::string, std::string>> all = {
        {"Arrows, Home", "move the view, and put it in the middle"},
        {"Wheel", "how far the view swings"},
        {"X", "the other one of the settings A and B"},
        {"S", "A and B on either side of a line"},
        {"D", "how far A and B are apart, eight times as much"},
        {"P", "then a click: what is to stay in place"},
        {"W", "the lines of the bent mesh"},
        {"G", "what becomes of photo and depth on the way"},
        {"T", "what a frame takes"},
        {"R", "begin and end to record the hand"},
        {"Space", "play, pause"},
        {", and .", "a frame back, a frame on"},
        {"Ctrl+Z", "undo; Ctrl+Shift+Z or Ctrl+Y: redo"},
        {"Ctrl+S", "save the picture as it stands"},
        {"Ctrl+E", "export all"},
        {"F1", "this list"},
        {"Ctrl+Q", "close"},
    };
    return all;
}

}  // namespace quorvane::tuner
