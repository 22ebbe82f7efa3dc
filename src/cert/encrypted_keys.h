#pragma once

#include <QByteArray>
#include <QSslKey>

// Keys in PKCS #8, encrypted with pbeWithSHAAnd3-KeyTripleDES-CBC as the system exports them.
namespace quorin::test {

// Inverts every bit.
[[nodiscard]] inline QByteArray invert(QByteArray bytes) {
    for (char& byte : bytes) {
        byte = static_cast<char>(~byte);
    }
    return bytes;
}

// Returns the pass phrase of all keys, inverted. The program contains the pass phrase only in this
// form, so that a test can find copies of it.
[[nodiscard]] inline QByteArray invertedPassPhrase() {
    return QByteArray::fromHex("90919ad28b96929aa0afbeacac8f978d9e8c9ad2cfcecdcccbcac9c8c7c6");
}

[[nodiscard]] inline QByteArray passPhrase() {
    return invert(invertedPassPhrase());
}

// P-256.
[[nodiscard]] inline QByteArray encryptedEcKey() {
    return QByteArray::fromBase64(
        "MIGwMBsGCiqGSIb3DQEMAQMwDQQI5hOdqU6dgEwCAQEEgZCgvPQn0NLF5OlkFYE3GyHyndvWr+q+lxnpj61lyQ8o"
        "azAk7aIwg1GQoJL7uVY+/dlRmV/r4sT1WDtuUw67ow/SXFd0YPz1pwGqa4PDxTG+7bqTLMgMiXJrMCkn06LBpoEp"
        "2irfz1t0gue5EXEN8GHa+XpfrtEQywk7zslgvd5cj8E9oZ4Nk9eCQ/kJyC+g/wk=");
}

// The private number of this key as it is in PKCS #8, inverted.
[[nodiscard]] inline QByteArray invertedEcNumber() {
    return QByteArray::fromHex("9d14a95478855e08e7650ad008a43b99558fd654513f9f8517c1cf44a6e3d2b1");
}

// The same key, decrypted.
[[nodiscard]] inline QSslKey ecKey() {
    return QSslKey(
        QByteArray::fromBase64(
            "MHcCAQEEIGLrVquHeqH3GJr1L/"
            "dbxGaqcCmrrsBgeug+MLtZHC1OoAoGCCqGSM49AwEHoUQDQgAEGReci7NkYN6w"
            "21ff1YOjCwUtOyJoEW7hnNhzwY2TBD8ITInsvi5Qt1gRqB0g7SYnCpr6zt5icVgZBim2KGNKPA=="),
        QSsl::Ec, QSsl::Der);
}

// 2048 bits.
[[nodiscard]] inline QByteArray encryptedRsaKey() {
    return QByteArray::fromBase64(
        "MIIE6TAbBgoqhkiG9w0BDAEDMA0ECGgrSYFlKwFNAgEBBIIEyLYTLKQKxsSc//gklquYN3a95dTOVDfRUvrP/zCB"
        "CA40wR1lwg7VdSzo0GYnuw7/GbQ+nVLNBphya2d2Nk8IC0SUpzWIqPV5Jo4BfKEPY6vwhkjjD73Ru97M3pZUchXv"
        "IYJ9kAXtzbmCw30xXyPBE4EsoaK+n+ky4T58BQbApnkF3FY67rJiJQAuUFaq3kH7NHPERRSTTnPUDBcbob9V4mAX"
        "HDv9tJjDI8huO70vXaAZb/lw/qrksuct2r5EnQNZJIxmkcni+oJxmIrhjOvah5C8lQpPgj6qnRPjh03erzAApSHP"
        "IgEwVO5GAMw+ROxjs/ROfXhieX4184QTLk9nilpaIvW2CcLGL4LVbj8QKxVRrps+84hRMvPcDnClKSW+NdRwh7Gk"
        "8l9j80fM9IcsHui2iKqZy00Mv4nRACdPAalyEfUKtlFJXdgbIX/gVNgCztXoK6UxhTZZX4fGrEQxT4EK+GIC0kh0"
        "wAiegqdUse3jachzHj0Fe+YH9MQmoIjDcKBrux8DKDxbW43w/qJTJpyjTgsQOBPdDo7xBvl37kF3JpDxmowWkCWN"
        "cN749rfbCTsmRKd7cgcqxY2CYRZad5+YqERoc993yqchsqUC0WSuA3L4fxeE0Z/dngQYvrVx8ALbN/nGhefJgaI1"
        "WsQ92vSZGz/fPirb9VDvDA0Zifa1m8h10XdVXO0cLYQxrSHclMcvRIyG1WCTjwVnpsCvKXIvK5ClqDb43+c4sPfO"
        "Z50k01R3JFi7kR1MyNEVQTx8vWb9nFmcTt0ygnuObSxcI6bJlImnsyEhwUUcsRiEoIuNLktdZYKXE0uPZdnjzCWa"
        "hd8dDKV4YJBNJVDrvXuXDmIKrnZAS0kaidm4KbHR+TDM4HU08dECLXOyejp2leGPJExjL+Vf5WEbeavdQn/mEqAb"
        "Jg4fT+/pBfmfvQ+2m5CPkq8U/bVXCxjBZ6OtzXz/o7v2RR8Ee//F4dfCc9NxrG9I+uSScTFpHCAqG/Sjlq0TEwyz"
        "O6lVAyY4IZE+B3I1YYCUduvme9CXQ35uMFLJUjw6ddLMZ6f72/hLCtQRWdbvIPhLRl79J1I0hL6ZG8U1DzZfXUU2"
        "ub/1/xAKEMEYgfDCMqBEJSsz9Piqf3mupKECNwxpJNr7ZnVoW3x10uLFrQzDk0PlSQ56qRX+U1XjZzG3rLIGrQsW"
        "XWjqWcN8VU1wYPcatBcBmpPu5mfZt0RYErQsqNQPM6v1CyFyGyVn94i480HdSwPlNKXXJqU3NQx+PIdbKvONLtfC"
        "BWSe4DA6Y3yLr/hqMmSgaXbRHdul1NV3sNNs8ItEwP9Iv9qLSGje44bY5DDPGljkiepjUUA4o0XAIsuaoZUkpoD0"
        "LSoy43izPrZOKHOUgwjWoVzK/fsy9AiGlynlgSha8QIzq2/l6Qzda451DfA2TLk9jNGYM3Gp2QSjat0TFUp2lNCx"
        "QwqXlYurCB+Uun20XlQR6PcfBn+CemjX69An6oSkIaGqPZtOf5yp15Hhbs5M/kz6KisogRTimY01Q/RHoz9y9Fr4"
        "NUCSW/7sckDjUbz5tDtmWr7oaGmUcEGn49mDUtHrPX/v0BIndrcsn0DXuvJnWnA0fhLJz1meKbS2c0as5DgyAVDZ"
        "ty+uEnsIiA==");
}

} // namespace quorin::test
