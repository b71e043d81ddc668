// Shared by the sample script and its test.
#ifndef RESOURCE_COMPILER_SAMPLE_H
#define RESOURCE_COMPILER_SAMPLE_H
#define IDM_OPEN 101
#define IDM_EXIT (10000 + 5)
#endif
