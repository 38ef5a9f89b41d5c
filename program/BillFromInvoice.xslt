<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: an invoice from another company, booked as a bill.

  Receives the InvoiceRet of an exchange file (the sender's CompanyRet somewhere below it)
  and writes the qbXML 1.1 message that adds the bill, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><BillAddRq requestID="1"><BillAdd>
      VendorRef/FullName   the sender's CompanyRet/CompanyName (first 41 letters, a vendor
                           name's length); the import overwrites CompanyName beforehand when
                           the user picked a vendor of his own
      TxnDate, DueDate, RefNumber (the invoice number), TermsRef/FullName (the sender's terms,
      repointed by the import settings), Memo (the invoice's memo and its P.O. number)
      ItemLineAdd          one per invoice line: ItemRef/FullName (the sender's item,
                           repointed by the import settings), Desc, Quantity, Cost (the rate),
                           Amount. A subtotal line names the item "Subtotal" and carries no
                           amount, so the receiver's own subtotal item adds up his lines.
      ItemGroupLineAdd     one per group line: ItemGroupRef/FullName, Quantity
      ItemLineAdd          the invoice's sales tax, when there is any: ItemRef/FullName = the
                           sender's tax item, Desc "Sales Tax", Amount
    </BillAdd></BillAddRq></QBXMLMsgsRq></QBXML>

  The bill's total is the invoice's total (Subtotal + SalesTaxTotal), unless a group line
  expands to other amounts in the receiver's company file. The sender's classes, customer
  messages and sales tax codes mean nothing to the receiver and are left out.

  Every character that is not ASCII goes out as a character reference, as QuickBooks wants.

  CheckFromSalesReceipt.xslt and CRChargeFromSalesReceipt.xslt import this sheet for the
  line templates (mode "item-line"), the vendor name and the memo.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <!-- A whole document: its root element. -->
  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="InvoiceRet">
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <BillAddRq requestID="1">
          <BillAdd>
            <xsl:call-template name="vendor-ref"><xsl:with-param name="element">VendorRef</xsl:with-param></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="TxnDate"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="DueDate"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="RefNumber"/></xsl:call-template>
            <xsl:call-template name="ref"><xsl:with-param name="element">TermsRef</xsl:with-param><xsl:with-param name="name" select="TermsRef/FullName"/></xsl:call-template>
            <xsl:call-template name="memo">
              <xsl:with-param name="extra-label">P.O. No. </xsl:with-param>
              <xsl:with-param name="extra" select="PONumber"/>
            </xsl:call-template>
            <xsl:apply-templates mode="item-line" select="InvoiceLineRet | InvoiceLineGroupRet"/>
            <xsl:call-template name="tax-line"/>
          </BillAdd>
        </BillAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- ===== Parts shared with the check and the charge ===== -->

  <!-- The vendor: the sending company's name as a vendor name. -->
  <xsl:template name="vendor-ref">
    <xsl:param name="element"/>
    <xsl:element name="{$element}">
      <FullName><xsl:value-of select="substring((.//CompanyRet/CompanyName)[1], 1, 41)"/></FullName>
    </xsl:element>
  </xsl:template>

  <!-- A list reference by full name; nothing when the name is empty. -->
  <xsl:template name="ref">
    <xsl:param name="element"/>
    <xsl:param name="name"/>
    <xsl:if test="normalize-space($name) != ''">
      <xsl:element name="{$element}"><FullName><xsl:value-of select="$name"/></FullName></xsl:element>
    </xsl:if>
  </xsl:template>

  <!-- An element with its text, when it has some. -->
  <xsl:template name="copy-text">
    <xsl:param name="node"/>
    <xsl:param name="name" select="local-name($node)"/>
    <xsl:if test="normalize-space($node) != ''">
      <xsl:element name="{$name}"><xsl:value-of select="$node"/></xsl:element>
    </xsl:if>
  </xsl:template>

  <!-- The memo: the document's own, then a reference number the target has no field for. -->
  <xsl:template name="memo">
    <xsl:param name="extra-label"/>
    <xsl:param name="extra"/>
    <xsl:variable name="text">
      <xsl:value-of select="Memo"/>
      <xsl:if test="normalize-space($extra) != ''">
        <xsl:if test="normalize-space(Memo) != ''"><xsl:text>; </xsl:text></xsl:if>
        <xsl:value-of select="concat($extra-label, $extra)"/>
      </xsl:if>
    </xsl:variable>
    <xsl:if test="normalize-space($text) != ''">
      <Memo><xsl:value-of select="substring($text, 1, 4095)"/></Memo>
    </xsl:if>
  </xsl:template>

  <!-- A line: an item line of a bill, a check or a charge. -->
  <xsl:template mode="item-line" match="InvoiceLineRet | SalesReceiptLineRet | EstimateLineRet">
    <ItemLineAdd>
      <xsl:choose>
        <xsl:when test="boolean(self::*[Amount and not(Quantity) and not(Rate) and not(RatePercent)
                        and contains(translate(concat(ItemRef/FullName, ' ', Desc), 'SUBTOAL', 'subtoal'), 'subtotal')])">
          <ItemRef><FullName>Subtotal</FullName></ItemRef>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Desc"/></xsl:call-template>
        </xsl:when>
        <xsl:otherwise>
          <xsl:call-template name="ref"><xsl:with-param name="element">ItemRef</xsl:with-param><xsl:with-param name="name" select="ItemRef/FullName"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Desc"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Quantity"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Rate"/><xsl:with-param name="name">Cost</xsl:with-param></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Amount"/></xsl:call-template>
        </xsl:otherwise>
      </xsl:choose>
    </ItemLineAdd>
  </xsl:template>

  <!-- A group line: a reference to the item group, as many times as the document had it. -->
  <xsl:template mode="item-line" match="InvoiceLineGroupRet | SalesReceiptLineGroupRet | EstimateLineGroupRet">
    <ItemGroupLineAdd>
      <ItemGroupRef><FullName><xsl:value-of select="ItemGroupRef/FullName"/></FullName></ItemGroupRef>
      <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Quantity"/></xsl:call-template>
    </ItemGroupLineAdd>
  </xsl:template>

  <!-- The document's sales tax as a line of its own, so that the totals agree. -->
  <xsl:template name="tax-line">
    <xsl:param name="line">ItemLineAdd</xsl:param>
    <xsl:if test="normalize-space(SalesTaxTotal) != '' and number(SalesTaxTotal) != 0">
      <xsl:element name="{$line}">
        <xsl:call-template name="ref"><xsl:with-param name="element">ItemRef</xsl:with-param><xsl:with-param name="name" select="ItemSalesTaxRef/FullName"/></xsl:call-template>
        <Desc>
          <xsl:text>Sales Tax</xsl:text>
          <xsl:if test="normalize-space(SalesTaxPercentage) != ''">
            <xsl:value-of select="concat(' (', SalesTaxPercentage, '%)')"/>
          </xsl:if>
        </Desc>
        <Amount><xsl:value-of select="SalesTaxTotal"/></Amount>
      </xsl:element>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
