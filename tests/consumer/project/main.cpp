// Makes a tool over an empty design, and prints its name.
#include "Pelko/Model.h"
#include "Vorlen/Tool.h"

#include <iostream>

int main() {
    Pelko::Model model("consumer");
    Vorlen::Tool* tool = Vorlen::Tool::create();
    std::cout << tool->getAlias() << '\n';
    tool->destroy();
}
