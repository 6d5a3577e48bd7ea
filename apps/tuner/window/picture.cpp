#include "apps/tuner/window/picture.h"

#include <utility>

#include "system/error.h"

namespace quorvane::tuner {
namespace {

std::unique_ptr<app::View> viewFor(const Tuning& tuning, Size size, ParallaxView** parallax) {
    const auto make = [&](Size picture, int samples, std::unique_ptr<PhotoView>* view) {
        std::unique_ptr<ParallaxView> made;
        Status status = ParallaxView::create(picture.width, picture.height,
                                             {static_cast<uint32_t>(tuning.orientation), samples}, &made);
        *parallax = made.get();
        *view = std::move(made);
        return status;
    };
    app::Talk quiet;
    quiet.quiet = true;
    return std::make_unique<app::View>(viewOptions(tuning), quiet, size, make);
}

bool samePlace(const app::Position& a, const app::Position& b) {
    return a.x == b.x && a.y == b.y && a.zoom == b.zoom;
}

}  // namespace

app::Target Picture::probe(int samples) {
    Tuning tuning;
    tuning.samples = samples;
    ParallaxView* unused = nullptr;
    return viewFor(tuning, {16, 16}, &unused)->target({});
}

void Picture::take(Prepared prepared) {
    const Tuning& tuning = prepared.tuning;
    const bool fits = m_view != nullptr && prepared.size == m_prepared.size &&
                      tuning.orientation == m_prepared.tuning.orientation &&
                      tuning.samples == m_prepared.tuning.samples;
    if (!fits) {
        ParallaxView* parallax = nullptr;
        std::unique_ptr<app::View> view = viewFor(tuning, prepared.size, &parallax);
        // Before the old one, so that the pictures never stop.
        m_view = std::move(view);
        m_parallax = parallax;
    } else {
        // What the last tuning set and this one leaves alone.
        const LibParam set = tunedSet(tuning);
        for (const Parameter& parameter : kParameters) {
            const Status status = m_parallax->setParameter(parameter.name, parameter.of(set));
            if (!status) throw Error(status.message());
        }
    }
    m_view->upload(prepared.planned);
    m_shown = inForce(tuning, prepared.planned.plan.parameters);
    m_prepared = std::move(prepared);
    m_drawn.reset();
}

void Picture::preview(const Tuning& tuning) {
    if (!ready() || tuning.orientation != m_prepared.tuning.orientation) return;
    const LibParam wanted = inForce(tuning, m_prepared.planned.plan.parameters);
    for (size_t i = 0; i < ParallaxView::parameters().size(); ++i) {
        const ParameterInfo& info = ParallaxView::parameters()[i];
        const Parameter& parameter = kParameters[i];
        if (info.takes_effect == TakesEffect::kNextDepth || parameter.of(wanted) == parameter.of(m_shown))
            continue;
        m_view->set(info.name, parameter.of(wanted));
        parameter.store(parameter.of(wanted), &m_shown);
        m_drawn.reset();
    }
}

void Picture::draw(app::Position position) {
    if (m_drawn && samePlace(*m_drawn, position)) return;
    m_drawn.reset();
    m_view->draw(position);
    m_drawn = position;
}

}  // namespace quorvane::tuner
