// Writes the manual pages and what shells complete by: quorvane_pages FOLDER YYYY-MM-DD

#include "apps/quorvane/terminal/pages.h"

#include "apps/quorvane/commands/program.h"

int main(int argc, char** argv) {
    return quorvane::app::pagesMain(quorvane::app::Program().lines(), argc, argv);
}
