// A step that the project's paths and the searches share.
#ifndef GEN_PATH_PROJECT_H
#define GEN_PATH_PROJECT_H

/// Makes the current directory the project directory if no project directory is set.
void gen_set_default_project_dir();

#endif
