#include "render/ShaderProgramInterpreter.h"

#include "parser/BaseParserElement.h"
#include "parser/Preprocessor.h"
#include "render/ShaderFragment.h"
#include "render/ShaderProgram.h"
#include "render/ShaderVertex.h"

#include <iostream>

namespace korvel {

const char* ShaderProgramInterpreter::className = "ShaderProgramInterpreter";

ShaderProgramInterpreter::ShaderProgramInterpreter() : program(nullptr) {}

bool ShaderProgramInterpreter::execute()
{
    // A definition that does not parse to the end still yields the elements
    // read before the fault; those are used.
    parse();
    if (parser == nullptr || parser->getModule() == nullptr) {
        return false;
    }
    return manageAttributes(&parser->getModule()->getAttributes());
}

bool ShaderProgramInterpreter::manageAttributes(const std::vector<BaseParserElement*>* elements)
{
    if (elements == nullptr || program == nullptr) {
        return false;
    }
    for (BaseParserElement* element : *elements) {
        if (element == nullptr) {
            continue;
        }
        if (element->getName() == "fragment") {
            if (verbose) {
                std::cout << "[Information] fragment is being processed" << std::endl;
            }
            if (!loadElement(element, program->getFragment())) {
                return false;
            }
        } else if (element->getName() == "vertex") {
            if (verbose) {
                std::cout << "[Information] vertex is being processed" << std::endl;
            }
            if (!loadElement(element, program->getVertex())) {
                return false;
            }
        }
    }
    return true;
}

bool ShaderProgramInterpreter::loadElement(BaseParserElement* element, Shader* stage)
{
    std::string file;
    element->startAttributes();
    if (!element->getNextAttributeValueString("file", file)) {
        std::cout << "[ERROR] shader definition element " << element->getName() << " names no file" << std::endl;
        return false;
    }
    if (stage == nullptr) {
        std::cout << "[ERROR] shader program has no " << element->getName() << " stage to load" << std::endl;
        return false;
    }
    return loadShader(stage, directory + "/" + file);
}

bool ShaderProgramInterpreter::loadShader(Shader* shader, const std::string& fileName)
{
    if (shader == nullptr) {
        return false;
    }
    shader->setFileName(fileName);
    std::cout << "[Information] file name: " << fileName << std::endl;
    if (!shader->read()) {
        return false;
    }
    Preprocessor preprocessor;
    std::string includeDirectory = directory;
    if (!includeDirectory.empty() && includeDirectory.back() == '/') {
        includeDirectory.pop_back();
    }
    preprocessor.setDirectory(includeDirectory);
    preprocessor.setSource(shader->getSource());
    // A source whose include is missing cannot compile as meant; the
    // preprocessor has said which file.
    if (!preprocessor.process(shader->getSource())) {
        return false;
    }
    if (verbose) {
        std::cout << "[Information] source after processing:" << std::endl;
        std::cout << shader->getSource() << std::endl;
        std::cout << "[Information] end of source" << std::endl;
    }
    return true;
}

}  // namespace korvel
