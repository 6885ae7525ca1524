// What the searches need of the project's paths.
#ifndef GEN_PATH_PROJECT_H
#define GEN_PATH_PROJECT_H

/// Makes the current directory the project directory if none is known.
void gen_need_project_dir();

#endif
