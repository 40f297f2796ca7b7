// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models.h"

#include "OptionalHash.h"

size_t qHash(const PromptItem &item, size_t seed)
{
    const size_t hash = qHashMulti(seed, item.id, item.title, item.text, item.categoryID, item.order);
    return hashOptional(item.createdAt, hash);
}

size_t qHash(const SkillItem &item, size_t seed)
{
    size_t hash = qHashMulti(seed, item.id, item.title, item.text);
    hash = hashOptional(item.sourceFilename, hash);
    return hashOptional(item.createdAt, qHashMulti(hash, item.order));
}

size_t qHash(const PromptCategory &category, size_t seed)
{
    size_t hash = qHashMulti(seed, category.id, category.name);
    hash = hashOptional(category.colorHex, hash);
    return hashOptional(category.createdAt, qHashMulti(hash, category.order));
}

size_t qHash(const RenderedPrompt &rendered, size_t seed)
{
    size_t hash = qHashMulti(seed, rendered.prompt, rendered.text);
    for (auto it = rendered.variables.cbegin(); it != rendered.variables.cend(); ++it)
        hash = qHashMulti(hash, it.key(), it.value());
    return hash;
}
