<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: one item of the web item update, as the JSON document posted to the company's web
  site (Content-Type application/json; charset=utf-8).

  Receives an ItemServiceRet, ItemInventoryRet or ItemNonInventoryRet and writes:

    {"name": FullName, "listId": ListID, "kind": "Service" | "Inventory" | "NonInventory",
     "price": the sales price as a number (null when the item has none),
     "description": the sales description, "modified": TimeModified,
     "active": IsActive as true/false,
     "quantityOnHand": for inventory items only, a number (null when unknown)}

  Texts are JSON strings: quotes, backslashes and control characters escaped, every other
  letter as it is (UTF-8). The site may take more fields in a later version and should ignore
  those it does not know.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="text" encoding="UTF-8"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="kind" select="substring-before(substring-after(local-name(), 'Item'), 'Ret')"/>
    <xsl:variable name="price" select="(SalesOrPurchase/Price | SalesAndPurchase/SalesPrice | SalesPrice)[1]"/>
    <xsl:variable name="description" select="(SalesOrPurchase/Desc | SalesAndPurchase/SalesDesc | SalesDesc)[1]"/>
    <xsl:text>{"name":</xsl:text>
    <xsl:call-template name="string"><xsl:with-param name="text" select="FullName"/></xsl:call-template>
    <xsl:text>,"listId":</xsl:text>
    <xsl:call-template name="string"><xsl:with-param name="text" select="ListID"/></xsl:call-template>
    <xsl:text>,"kind":</xsl:text>
    <xsl:call-template name="string"><xsl:with-param name="text" select="$kind"/></xsl:call-template>
    <xsl:text>,"price":</xsl:text>
    <xsl:call-template name="number"><xsl:with-param name="value" select="$price"/></xsl:call-template>
    <xsl:text>,"description":</xsl:text>
    <xsl:call-template name="string"><xsl:with-param name="text" select="$description"/></xsl:call-template>
    <xsl:text>,"modified":</xsl:text>
    <xsl:call-template name="string"><xsl:with-param name="text" select="TimeModified"/></xsl:call-template>
    <xsl:text>,"active":</xsl:text>
    <xsl:choose>
      <xsl:when test="IsActive = 'false'">false</xsl:when>
      <xsl:otherwise>true</xsl:otherwise>
    </xsl:choose>
    <xsl:if test="$kind = 'Inventory'">
      <xsl:text>,"quantityOnHand":</xsl:text>
      <xsl:call-template name="number"><xsl:with-param name="value" select="QuantityOnHand"/></xsl:call-template>
    </xsl:if>
    <xsl:text>}</xsl:text>
  </xsl:template>

  <!-- A number as JSON writes it; null when there is none or it does not read as one. -->
  <xsl:template name="number">
    <xsl:param name="value"/>
    <xsl:choose>
      <xsl:when test="normalize-space($value) != '' and string(number($value)) != 'NaN'">
        <xsl:value-of select="number($value)"/>
      </xsl:when>
      <xsl:otherwise>null</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- A JSON string. -->
  <xsl:template name="string">
    <xsl:param name="text"/>
    <xsl:text>"</xsl:text>
    <xsl:call-template name="escape"><xsl:with-param name="text" select="string($text)"/></xsl:call-template>
    <xsl:text>"</xsl:text>
  </xsl:template>

  <!-- Escapes one character at a time where it must, copying the runs between. -->
  <xsl:template name="escape">
    <xsl:param name="text"/>
    <xsl:variable name="special" select="translate($text, translate($text, '&quot;\&#9;&#10;&#13;', ''), '')"/>
    <xsl:choose>
      <xsl:when test="$special = ''">
        <xsl:value-of select="$text"/>
      </xsl:when>
      <xsl:otherwise>
        <xsl:variable name="c" select="substring($special, 1, 1)"/>
        <xsl:value-of select="substring-before($text, $c)"/>
        <xsl:choose>
          <xsl:when test="$c = '&quot;'">\"</xsl:when>
          <xsl:when test="$c = '\'">\\</xsl:when>
          <xsl:when test="$c = '&#9;'">\t</xsl:when>
          <xsl:when test="$c = '&#10;'">\n</xsl:when>
          <xsl:otherwise>\r</xsl:otherwise>
        </xsl:choose>
        <xsl:call-template name="escape">
          <xsl:with-param name="text" select="substring-after($text, $c)"/>
        </xsl:call-template>
      </xsl:otherwise>
    </xsl:choose>
  </xsl:template>

</xsl:stylesheet>
