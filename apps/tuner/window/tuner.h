#ifndef QUORVANE_APPS_TUNER_WINDOW_TUNER_H
#define QUORVANE_APPS_TUNER_WINDOW_TUNER_H

#include <array>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/tuner/core/exports.h"
#include "apps/tuner/core/gaze.h"
#include "apps/tuner/core/preparing.h"
#include "apps/tuner/core/profiles.h"
#include "apps/tuner/core/session.h"
#include "apps/tuner/core/stopwatch.h"
#include "apps/tuner/core/workbench.h"
#include "apps/tuner/window/controls_drawing.h"
#include "apps/tuner/window/extra_pictures.h"
#include "apps/tuner/window/picture.h"
#include "apps/tuner/window/widgets.h"
#include "apps/tuner/window/window.h"
#include "system/child_process.h"

namespace quorvane::tuner {

/// What the window was started with.
struct StartOptions {
    app::InputOptions input;
    Pair tunings;
    Recording hand;             ///< that moves the view at first, unless it is empty
    std::string export_folder;  ///< empty: next to the photo, called after it
    std::string session;        ///< file; empty: nothing is remembered
    std::string profiles;       ///< folder
    std::string controls;       ///< file for the places of the controls; empty: none
    std::string program;        ///< quorvane, for clips
    std::string remark;         ///< to be shown first
    int frames = 0;             ///< closes after so many; 0: never by itself
    double scale = 0.0;         ///< of texts and controls; 0: the desktop's
};

/// The window's contents: takes in what comes, has pictures prepared, draws them and the controls. Everything
/// here is on the thread that draws.
class Tuner {
  public:
    /// Throws Error.
    Tuner(const StartOptions& options, Window* window);
    ~Tuner();
    Tuner(const Tuner&) = delete;
    Tuner& operator=(const Tuner&) = delete;

    /// One frame. What fails is shown, not thrown, but for what leaves nothing to show.
    void frame();

    /// Whether it is to be closed.
    bool done() const { return m_done; }

    /// What is remembered for the next session.
    void saveSession();

    /// Whether the preparing thread can end at once.
    bool idle() const { return m_preparing.idle(); }
    void end() { m_preparing.end(); }

  private:
    struct Stage {
        const char* label;
        std::string says;
        Texture small, large;
    };
    struct Stages {
        std::array<Stage, 5> all;
        size_t of = 2;  ///< the slot that they show; 2: none
    };

    // tuner.cpp
    void takeInput();
    void onKey(const KeyPress& key);
    void requestPictures();
    void takePictures();
    void drawPictures();
    bool needs(size_t slot) const;
    app::Position position();
    void fail(const std::string& sentence);
    void say(const std::string& sentence);
    /// Shows what fails.
    void attempt(const std::function<void()>& work);
    Exported exported() const;
    std::string exportFolder() const;
    void exportAll();
    void makeClip();
    void followClip();
    void saveScreenshot();
    void followWrites();
    void showStages();
    void pickPivot(double x, double y);
    void writeControls();
    void toggleRecording();
    void stopRecording();
    void usePath();

    // panels.cpp
    void layOut();
    void toolbar();
    void pictureArea(ImVec2 from, ImVec2 room);
    void onPicture(const Placed& placed);
    void tunePanel();
    void parameterSliders();
    void depthChoices();
    void frameChoices();
    void motionPanel();
    void profilesPanel();
    void exportPanel();
    void stagesPanel(float width);
    void timingsPanel();
    void keysPanel();
    void statusLine(float height);
    template <typename Choose>
    void choice(const char* label, const char* hint, const std::vector<const char*>& names, size_t chosen,
                Choose choose);
    void note(const std::string& name, const std::string& value) { m_controls.note(name, value); }
    LibParam valuesInForce() const;

    Window* m_window;
    StartOptions m_options;
    ImGuiContext* m_context;
    float m_scale = 1.0f;
    float m_tools_height = 0.0f;  ///< as the toolbar came out last
    std::unique_ptr<ControlsDrawing> m_drawing;
    std::unique_ptr<ExtraPictures> m_extra;
    std::array<Picture, 2> m_pictures;
    Stages m_stages;

    Workbench m_bench;
    NamedProfiles m_profiles;
    Gaze m_gaze;
    PrintedLines m_printed;
    std::string m_printed_rest;
    std::vector<Plot> m_plots;
    Plot m_frame_times{"frame", {}};
    ControlList m_controls;
    double m_controls_time = 0.0;
    double m_session_time = 0.0;
    Pair m_session_tunings;  ///< as they were saved last

    // What was asked for last, of each tuning.
    std::array<std::optional<PrepareRequest>, 2> m_asked;
    std::vector<std::string> m_dropped;
    Size m_room;       ///< for a picture, in pixels
    Size m_room_seen;  ///< before it stood still for a moment
    double m_room_time = 0.0;
    std::map<int, app::Target> m_probes;  ///< of each number of samples that was asked for

    app::Position m_position;
    double m_now = 0.0;
    double m_last = 0.0;
    Recording m_take;  ///< that is being recorded
    bool m_recording = false;
    bool m_picking = false;
    bool m_dragging_split = false;
    bool m_show_stages = false;
    bool m_show_timings = false;
    bool m_show_keys = false;
    bool m_wires = false;
    bool m_done = false;
    int m_frame = 0;
    int m_export_tab = 0;
    std::string m_message;
    bool m_message_is_failure = false;
    double m_message_time = 0.0;
    std::array<char, 96> m_profile_name = {};
    std::array<char, 256> m_motion_text = {};
    std::string m_motion_failure;
    std::vector<std::string> m_profile_names;

    std::unique_ptr<ChildProcess> m_clip;
    std::string m_clip_path;
    std::vector<std::pair<std::string, std::future<void>>> m_writes;

    Preparing m_preparer;  ///< of the preparing thread alone
    Latest<PrepareRequest, Prepared, 2> m_preparing;
};

}  // namespace quorvane::tuner

#endif
