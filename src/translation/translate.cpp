#include "translation/translate.h"
