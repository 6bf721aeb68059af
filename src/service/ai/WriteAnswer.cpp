#include "service/ai/WriteAnswer.h"

namespace dorix::service {

Json toJson(const WriteAnswer& answer) {
    return {{"accion", answer.accion}, {"titulo", answer.titulo}, {"texto", answer.texto}};
}

}  // namespace dorix::service
