#define TEXT_FIRST 1
