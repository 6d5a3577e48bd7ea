// Writes the manual page and what shells complete by: quorvane_tuner_pages FOLDER YYYY-MM-DD

#include "apps/quorvane/terminal/pages.h"

#include "apps/tuner/core/asked.h"

int main(int argc, char** argv) {
    quorvane::tuner::Asked asked;
    return quorvane::app::pagesMain(*quorvane::tuner::commandLines(&asked), argc, argv);
}
